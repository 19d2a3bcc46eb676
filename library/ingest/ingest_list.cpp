// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/IngestList.h"

#include "ingest/ingest_file.h"
#include "media/card_layout.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/case_fold.h"
#include "platform/guard.h"
#include "platform/number_text.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"

#include <memory>

namespace nqp2 {
namespace {

constexpr const wchar_t* kListName = media::kIngestList.Text();

CString ListPath(const CString& root) {
    return ingest::UserData(root).PathOf(kListName);
}

std::int32_t Number(CMarkupMSXML& list, const wchar_t* attribute) {
    return platform::ToInt32(list.GetChildAttrib(attribute).View());
}

IngestList ReadClips(CMarkupMSXML& list) {
    IngestList clips;
    while (list.FindElem(L"Clip") != 0) {
        std::vector<tag_P2SegInfo> segments;
        while (list.FindChildElem(L"Segment") != 0) {
            segments.push_back({Number(list, L"InPoint"), Number(list, L"OutPoint")});
        }
        clips.emplace_back(list.GetAttrib(L"ClipName"), std::move(segments));
    }
    return clips;
}

/// Moves onto the first entry of the clip.
bool FindClip(CMarkupMSXML& list, const CString& clipName) {
    while (list.FindElem(L"Clip") != 0) {
        if (platform::EqualNoCase(list.GetAttrib(L"ClipName").View(), clipName.View())) {
            return true;
        }
    }
    return false;
}

IngestResult Fault(IngestStatus status, const CString& path, const CString& reason = L"") {
    return {status, path, reason, 0, 0};
}

IngestResult Load(CMarkupMSXML& list, const CString& path) {
    const platform::MemoryWatch watch;
    const auto [folder, name] = platform::SplitPath(path);
    platform::FoundFile file;
    // NotFound says that there is none, which is more than that none could be seen.
    const platform::IoStatus found = folder.Find(name, file);
    if (found.error == platform::IoError::NotFound) {
        return Fault(IngestStatus::NoList, path);
    }
    if (!found) {
        return Fault(IngestStatus::Unreadable, path, platform::TextFromUtf8(found.reason));
    }
    if (list.Load(path) == 0) {
        watch.Require();
        const dom::ParseError& error = xml::LoadErrorOf(list.GetDocumentPtr());
        return {IngestStatus::Unreadable, path, platform::TextFromUtf8(error.reason), error.line,
                error.linepos};
    }
    return Fault(IngestStatus::Done, path);
}

/// Moves onto the level of the clips.
IngestResult EnterMedia(CMarkupMSXML& list, const CString& path) {
    list.ResetMainPos();
    if (list.FindElem(L"Media") == 0) {
        return Fault(IngestStatus::Foreign, path, L"its root element is not Media");
    }
    list.IntoElem();
    return Fault(IngestStatus::Done, path);
}

/// The same, where the level of the clips is also the one that clips are added to.
IngestResult LoadPlain(CMarkupMSXML& list, const CString& path) {
    IngestResult result = Load(list, path);
    if (result.status == IngestStatus::Done) {
        result = EnterMedia(list, path);
    }
    if (result.status == IngestStatus::Done && list.FindElem(L"Media") != 0) {
        result = Fault(IngestStatus::Foreign, path, L"its Media element holds another");
    }
    return result;
}

IngestResult Saved(CMarkupMSXML& list, platform::Folder& folder, const CString& path) {
    const platform::IoStatus saved = ingest::Save(list, folder, kListName);
    return saved ? Fault(IngestStatus::Done, path)
                 : Fault(IngestStatus::NotSaved, path, platform::TextFromUtf8(saved.reason));
}

IngestResult Add(platform::Folder& folder, const CString& path, const IngestClips& clips) {
    const platform::MemoryWatch watch;
    CMarkupMSXML list;
    IngestResult result = LoadPlain(list, path);
    if (result.status == IngestStatus::NoList) {
        ingest::MakeList(list);
    } else if (result.status != IngestStatus::Done) {
        return result;
    }
    const bool added = ingest::AddClips(list, clips);
    watch.Require();
    return added ? Saved(list, folder, path) : Fault(IngestStatus::BadName, path);
}

IngestResult Remove(platform::Folder& folder, const CString& path, const CString& clipName) {
    const platform::MemoryWatch watch;
    CMarkupMSXML list;
    IngestResult result = Load(list, path);
    if (result.status == IngestStatus::Done) {
        result = EnterMedia(list, path);
    }
    if (result.status != IngestStatus::Done) {
        return result;
    }
    const bool found = FindClip(list, clipName);
    watch.Require();
    if (!found) {
        return Fault(IngestStatus::NotListed, path);
    }
    return list.RemoveElem() == 0 ? Fault(IngestStatus::NotSaved, path) : Saved(list, folder, path);
}

/// Runs a change of the list while no other process changes it. The folder is made for those who
/// add.
template <class Change>
IngestResult Changed(const CString& root, bool make, Change change) {
    const CString path = ListPath(root);
    std::unique_ptr<platform::Folder> folder;
    platform::IoStatus status = ingest::OpenUserData(root, make, folder);
    if (!make && status.error == platform::IoError::NotFound) {
        return Fault(IngestStatus::NoList, path);
    }
    if (!status) {
        return Fault(IngestStatus::NotSaved, path,
                     L"its folder cannot be opened: " + platform::TextFromUtf8(status.reason));
    }
    return ingest::BeginChange(*folder) ? change(*folder, path) : Fault(IngestStatus::Busy, path);
}

IngestResult NotSaved() noexcept {
    return {IngestStatus::NotSaved, {}, {}, 0, 0};
}

} // namespace

bool LoadIngestList(const CString& root, IngestList& list) noexcept {
    IngestResult result;
    // cppcheck-suppress throwInNoexceptFunction // it is guarded
    return LoadIngestList(root, list, result);
}

bool LoadIngestList(const CString& root, IngestList& list, IngestResult& result) noexcept {
    // cppcheck-suppress throwInNoexceptFunction // under the guard
    return platform::Guarded(false, [&] {
        list.clear();
        const platform::MemoryWatch watch;
        CMarkupMSXML document;
        result = LoadPlain(document, ListPath(root));
        if (result.status == IngestStatus::Done) {
            document.ResetMainPos();
            IngestList read = ReadClips(document);
            watch.Require();
            list = std::move(read);
        }
        return result.status == IngestStatus::Done || result.status == IngestStatus::NoList;
    });
}

IngestResult AddToIngestList(const CString& root, const IngestClips& clips) {
    return platform::Guarded(NotSaved(), [&] {
        return Changed(root, true, [&](platform::Folder& folder, const CString& path) {
            return Add(folder, path, clips);
        });
    });
}

IngestResult RemoveFromIngestList(const CString& root, const CString& clipName) {
    return platform::Guarded(NotSaved(), [&] {
        return Changed(root, false, [&](platform::Folder& folder, const CString& path) {
            return Remove(folder, path, clipName);
        });
    });
}

} // namespace nqp2
