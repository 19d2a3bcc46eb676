// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "ingest/IngestList.h"

#include "ingest/ingest_file.h"
#include "platform/case_blind.h"
#include "platform/case_fold.h"
#include "platform/guard.h"
#include "platform/number_text.h"
#include "platform/PathText.h"
#include "xml/MarkupMSXML.h"

namespace nqp2 {
namespace {

constexpr const wchar_t* kListName = L"Ingest.xml";

CString ListPath(const CString& root) {
    return ingest::UserDataFolder(root) + kListName;
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

} // namespace

bool LoadIngestList(const CString& root, IngestList& list) {
    return platform::Guarded(false, [&] {
        list.clear();
        const CString path = ListPath(root);
        if (!platform::PathExists(PosixPath(path))) {
            return true;
        }
        CMarkupMSXML document;
        if (document.Load(path) == 0) {
            return false;
        }
        if (document.FindElem(L"Media") != 0) {
            document.IntoElem();
            list = ReadClips(document);
        }
        return true;
    });
}

IngestRemoval RemoveFromIngestList(const CString& root, const CString& clipName) {
    return platform::Guarded(IngestRemoval::NoList, [&] {
        const CString path = ListPath(root);
        CMarkupMSXML list;
        if (!platform::PathExists(PosixPath(path)) || list.Load(path) == 0) {
            return IngestRemoval::NoList;
        }
        list.ResetMainPos();
        if (list.FindElem(L"Media") == 0) {
            return IngestRemoval::NotListed;
        }
        list.IntoElem();
        if (!FindClip(list, clipName)) {
            return IngestRemoval::NotListed;
        }
        list.RemoveElem();
        return list.Save(path) != 0 ? IngestRemoval::Removed : IngestRemoval::NotSaved;
    });
}

} // namespace nqp2
