// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "ingest/ingest_file.h"

#include "media/card_layout.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/case_fold.h"
#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"
#include "xml/dom/tree.h"

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
    /// Walks the level that the cursor is on.
    explicit ClipIndex(CMarkupMSXML& list) {
        list.ResetMainPos();
        while (list.FindElem(kClip) != 0) {
            m_last = list.GetMainPosPtr();
            m_clips.emplace(platform::FoldCase(list.GetAttrib(kClipName).View()), m_last.get());
        }
        list.ResetMainPos();
    }

    /// Moves the list's cursor onto the clip's entry, which is added when there is none yet.
    /// Returns false for a name that XML cannot hold.
    bool MoveTo(CMarkupMSXML& list, const CString& clipName) {
        const std::wstring key = platform::FoldCase(clipName.View());
        const auto found = m_clips.find(key);
        if (found != m_clips.end()) {
            dom::Node& clip = *found->second;
            return list.SetMainPosPtr(clip.tree->Share(&clip)) != 0;
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
        m_clips.emplace(key, m_last.get());
        return true;
    }

private:
    std::unordered_map<std::wstring, dom::Node*> m_clips; ///< they stay in the document
    IXMLDOMNodePtr m_last;
};

/// Gives an unreadable file a name that no scan picks up, so that nothing in it is lost.
platform::IoStatus PutAside(platform::Folder& folder, const std::string& name) {
    constexpr int kTries = 1000;
    platform::IoStatus moved = {platform::IoError::Exists, "too many files are kept aside"};
    for (int number = 1; number < kTries && moved.error == platform::IoError::Exists; ++number) {
        moved = folder.MoveToFree(name, name + ".unreadable" + std::to_string(number));
    }
    return moved;
}

/// Reads the list, or makes a new one when there is none or none that is sound; the cursor
/// is then on the level of its clips. Fails for a file that can neither be read nor be put aside.
platform::IoStatus Open(CMarkupMSXML& list, const platform::MemoryWatch& watch,
                        platform::Folder& folder, const platform::Place& place,
                        const CString& fileName) {
    std::string name;
    platform::IoStatus status =
        platform::FindIn(folder, platform::NameBytesFromText(fileName.View()), name);
    const bool isNew = status.error == platform::IoError::NotFound;
    if (!isNew && !status) {
        return status;
    }
    bool isSound = false;
    if (!isNew) {
        isSound = list.Load(place.PathOf(platform::TextFromNameBytes(name))) != 0;
        watch.Require(); // a sound list is not put aside when memory is out
    }
    if (!isSound) {
        status = isNew ? platform::IoStatus{} : PutAside(folder, name);
        MakeList(list);
        return status;
    }
    if (list.FindElem() != 0) {
        list.IntoElem();
    }
    if (list.FindElem(L"Media") != 0) {
        list.IntoElem();
    }
    return status;
}

/// Adds the segments to the entry that the cursor is on.
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

platform::Place UserData(const CString& root) {
    return platform::Place(media::WithDrive(root)).Below(media::kUserData.Path());
}

platform::IoStatus OpenUserData(const CString& root, bool make,
                                std::unique_ptr<platform::Folder>& folder) {
    const platform::Place card(media::WithDrive(root));
    return make ? card.MakeBelow(media::kUserData.Text(), folder)
                : card.OpenBelow(media::kUserData.Text(), folder);
}

platform::IoStatus BeginChange(platform::Folder& folder) {
    constexpr std::chrono::seconds kPatience(5);
    platform::IoStatus status = folder.Lock(kPatience);
    if (status) {
        static_cast<void>(folder.RemoveAbandoned()); // what cannot be removed disturbs no writer
    }
    return status;
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

platform::IoStatus Save(CMarkupMSXML& list, platform::Folder& folder, const CString& fileName) {
    const IXMLDOMDocumentPtr& document = list.GetDocumentPtr();
    const std::optional<std::string> text =
        document != nullptr ? document->TextToSave() : std::nullopt;
    if (!text) {
        return {platform::IoError::Other, "it could not be loaded again"};
    }
    std::string target;
    platform::IoStatus status =
        platform::FindTargetIn(folder, platform::NameBytesFromText(fileName.View()), target);
    return status ? folder.WriteWhole(target, *text) : status;
}

bool AddToFile(platform::Folder& folder, const platform::Place& place, const CString& fileName,
               const IngestClips& clips) {
    const platform::MemoryWatch watch;
    CMarkupMSXML list;
    if (!BeginChange(folder)) {
        return false;
    }
    platform::IoStatus status = Open(list, watch, folder, place, fileName);
    if (status) {
        // The host is not told which clips were left out: kept.
        static_cast<void>(AddClips(list, clips));
        watch.Require();
        status = Save(list, folder, fileName);
    }
    // Nor whether the list could be saved, unless something else would have been written: kept.
    return status.error != platform::IoError::IsLink;
}

} // namespace nqp2::ingest
