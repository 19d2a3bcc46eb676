// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as a card's ingest list: read, extended, and a clip taken out again.

#include "fuzz/measured_input.h"
#include "fuzz/memory_files.h"
#include "fuzz/require.h"
#include "ingest/ingest_file.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/case_fold.h"
#include "platform/folder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using nqp2::IngestList;
using nqp2::IngestResult;
using nqp2::IngestStatus;
using nqp2::fuzz::Require;

constexpr const wchar_t* kRoot = L"/nqp2-fuzz";
constexpr const char* kFile = "/nqp2-fuzz/USERDATA/Ingest.xml";
constexpr const wchar_t* kClip = L"0001AA";
constexpr const char* kOnlyPath = "/nqp2-fuzz/USERDATA";

bool IsClip(const IngestList::value_type& entry) {
    return nqp2::platform::EqualNoCase(entry.first.View(), kClip);
}

bool SameSegment(const tag_P2SegInfo& left, const tag_P2SegInfo& right) {
    return left.InPoint == right.InPoint && left.OutPoint == right.OutPoint;
}

bool SameEntry(const IngestList::value_type& left, const IngestList::value_type& right) {
    return left.first == right.first &&
           std::equal(left.second.begin(), left.second.end(), right.second.begin(),
                      right.second.end(), SameSegment);
}

IngestList Loaded() {
    IngestList list;
    Require(nqp2::LoadIngestList(kRoot, list), "what was saved loads");
    return list;
}

void CheckAddAndRemove(IngestList expected) {
    Require(nqp2::AddToIngestList(kRoot, {{kClip, {{3, 4}}}}).status == IngestStatus::Done,
            "a list is extended");
    auto entry = std::find_if(expected.begin(), expected.end(), IsClip);
    const bool isNew = entry == expected.end();
    if (isNew) {
        expected.push_back({kClip, {}});
        entry = expected.end() - 1;
    }
    entry->second.push_back({3, 4});
    const IngestList added = Loaded();
    Require(std::equal(added.begin(), added.end(), expected.begin(), expected.end(), SameEntry),
            "one segment is added to the first entry and nothing else changes");
    expected.erase(entry);
    Require(nqp2::RemoveFromIngestList(kRoot, kClip).status == IngestStatus::Done, "it is removed");
    const IngestList removed = Loaded();
    Require(std::equal(removed.begin(), removed.end(), expected.begin(), expected.end(), SameEntry),
            "the first entry is gone and nothing else changes");
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    MemoryFiles folder;
    folder.files[kFile] = bytes;
    const nqp2::platform::ScopedFileSystem inPlace(folder);
    IngestList list;
    IngestResult result;
    if (nqp2::LoadIngestList(kRoot, list, result)) {
        CheckAddAndRemove(list);
        return 0;
    }
    Require(nqp2::AddToIngestList(kRoot, {{kClip, {{3, 4}}}}).status == result.status &&
                folder.files[kFile] == bytes,
            "what is no list stays as it is");
    std::unique_ptr<nqp2::platform::Folder> opened;
    Require(static_cast<bool>(folder.OpenFolder(kOnlyPath, opened)), "it opens");
    nqp2::ingest::AddToFile(*opened, nqp2::ingest::UserData(kRoot), L"Ingest.xml",
                            {{kClip, {{3, 4}}}, {L"other", {{5, 6}}}});
    Require(result.status == IngestStatus::Foreign ||
                folder.files[std::string(kFile) + ".unreadable1"] == bytes,
            "what cannot be read is kept aside");
    CMarkupMSXML saved;
    Require(saved.Load(nqp2::ingest::UserData(kRoot).PathOf(L"Ingest.xml")) != 0,
            "what was saved is sound");
    Require(result.status == IngestStatus::Foreign || Loaded().size() == 2,
            "a new list holds all that was added");
    return 0;
}
