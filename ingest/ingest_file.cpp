// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "ingest/ingest_file.h"

#include "media/card_layout.h"
#include "platform/case_blind.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "platform/folder_index.h"
#include "platform/guard.h"
#include "platform/PathText.h"
#include "xml/MarkupMSXML.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace nqp2::ingest {
namespace {

constexpr const wchar_t* kClip = L"Clip";
constexpr const wchar_t* kClipName = L"ClipName";

CString NumberText(std::int32_t number) {
    CString text;
    text.Format(L"%d", number);
    return text;
}

/// The clips of a list by their names, so that each is found without a walk over all of them.
/// Of several with one name the first counts.
class ClipIndex {
public:
    /// Walks the level that the cursor stands on.
    explicit ClipIndex(CMarkupMSXML& list) {
        list.ResetMainPos();
        while (list.FindElem(kClip) != 0) {
            m_last = list.GetMainPosPtr();
            m_clips.emplace(platform::FoldCase(list.GetAttrib(kClipName).View()), m_last);
        }
        list.ResetMainPos();
    }

    /// Moves the list's cursor onto the clip's entry, which is added when there is none yet.
    /// Returns false when there is no room for it, a document having one element at its top, and
    /// for a name that XML cannot hold.
    bool MoveTo(CMarkupMSXML& list, const CString& clipName) {
        const std::wstring key = platform::FoldCase(clipName.View());
        const auto found = m_clips.find(key);
        if (found != m_clips.end()) {
            return list.SetMainPosPtr(found->second) != 0;
        }
        list.SetMainPosPtr(m_last);
        if (list.AddElem(kClip) == 0) {
            return false;
        }
        if (list.AddAttrib(kClipName, clipName) == 0) {
            list.RemoveElem(); // a name that no attribute can hold leaves no entry without name
            return false;
        }
        m_last = list.GetMainPosPtr();
        m_clips.emplace(key, m_last);
        return true;
    }

private:
    std::unordered_map<std::wstring, IXMLDOMNodePtr> m_clips;
    IXMLDOMNodePtr m_last;
};

/// Gives an unreadable file a name that no scan picks up, so that nothing in it is lost. Returns
/// false when it stands where it stood; so does a folder in the file's place.
bool PutAside(const std::string& path) {
    platform::FileSystem& files = platform::Files();
    platform::FileInfo info;
    if (!files.Stat(path, info) || info.kind != platform::EntryKind::File) {
        return false;
    }
    constexpr int kTries = 1000;
    for (int number = 1; number < kTries; ++number) {
        const std::string aside = path + ".unreadable" + std::to_string(number);
        const platform::IoStatus moved = files.MoveToFree(path, aside);
        if (moved || moved.error != platform::IoError::Exists) {
            return static_cast<bool>(moved);
        }
    }
    return false;
}

/// Reads the list, or makes a new one; the cursor then stands on the level of its clips. Returns
/// false for a file that can neither be read nor be put aside.
bool Open(CMarkupMSXML& list, const CString& path) {
    const platform::IoStatus found = FindList(path);
    if (!found) {
        MakeList(list);
        return found.error == platform::IoError::NotFound;
    }
    const std::string existing = platform::FindExisting(PosixPath(path)).value_or("");
    const platform::MemoryWatch watch;
    const bool isSound = list.Load(path) != 0;
    watch.Require(); // a sound list is not put aside for want of memory
    if (!isSound && !PutAside(existing)) {
        return false;
    }
    if (list.FindElem() != 0) {
        list.IntoElem();
    }
    if (list.FindElem(L"Media") != 0) {
        list.IntoElem();
    }
    return true;
}

/// Adds the segments to the entry on which the cursor stands.
void AddSegments(CMarkupMSXML& list, const std::vector<tag_P2SegInfo>& segments) {
    list.IntoElem();
    for (const tag_P2SegInfo& segment : segments) {
        if (list.AddElem(L"Segment") != 0) {
            list.AddAttrib(L"InPoint", NumberText(segment.InPoint));
            list.AddAttrib(L"OutPoint", NumberText(segment.OutPoint));
        }
    }
    list.OutOfElem();
}

} // namespace

CString UserDataFolder(const CString& root) {
    return media::WithDrive(root) + L"\\USERDATA\\";
}

platform::FolderLock LockFolder(const CString& folder) {
    return platform::FolderLock(platform::FindExisting(PosixPath(folder)).value_or(""));
}

platform::IoStatus FindList(const CString& path) {
    const std::string asked = PosixPath(path);
    platform::FileInfo info;
    const platform::IoStatus status = platform::Files().Stat(asked, info);
    if (status.error != platform::IoError::NotFound) {
        return status;
    }
    const std::size_t name = asked.find_last_of('/') + 1;
    const platform::FolderIndex folder = platform::FolderIndex::Read(asked.substr(0, name));
    if (!folder.Status()) {
        return folder.Status();
    }
    return folder.Contains(asked.substr(name)) ? platform::IoStatus{} : status;
}

void MakeList(CMarkupMSXML& list) {
    if (list.CreateMainRoot(L"Media") != 0) {
        list.AddAttrib(L"MediaID", L"P2");
        list.IntoElem();
    }
}

bool AddClips(CMarkupMSXML& list, const IngestClips& clips) {
    bool all = true;
    ClipIndex index(list);
    for (const auto& [clipName, segments] : clips) {
        const bool held = index.MoveTo(list, clipName);
        if (held) {
            AddSegments(list, segments);
        }
        all = all && held;
        list.ResetMainPos();
    }
    return all;
}

bool AddToFile(const CString& folder, const CString& fileName, const IngestClips& clips) {
    const platform::MemoryWatch watch;
    const platform::FolderLock lock = LockFolder(folder);
    CMarkupMSXML list;
    if (lock && Open(list, folder + fileName)) {
        // Nobody is told which clips were left out and whether the list could be saved: kept.
        static_cast<void>(AddClips(list, clips));
        watch.Require();
        list.Save(folder + fileName);
    }
    return static_cast<bool>(lock);
}

} // namespace nqp2::ingest
