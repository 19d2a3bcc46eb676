// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as a card's ingest list: read, extended, and a clip taken out again.

#include "fuzz/fuzz_target.h"
#include "fuzz/memory_files.h"
#include "ingest/ingest_file.h"
#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/folder.h"

#include <memory>

namespace nqp2::fuzz {
namespace {

constexpr const wchar_t* kRoot = L"/nqp2-fuzz";
constexpr const char* kFile = "/nqp2-fuzz/USERDATA/Ingest.xml";
constexpr const wchar_t* kClip = L"0001AA";
constexpr const char* kOnlyPath = "/nqp2-fuzz/USERDATA";

IngestList Loaded() {
    IngestList list;
    Require(LoadIngestList(kRoot, list), "what was saved loads");
    return list;
}

void CheckAddAndRemove(std::size_t entries) {
    Require(AddToIngestList(kRoot, {{kClip, {{3, 4}}}}).status == IngestStatus::Done,
            "a list is extended");
    const std::size_t added = Loaded().size();
    Require(added == entries || added == entries + 1, "one entry is there or is new");
    Require(RemoveFromIngestList(kRoot, kClip).status == IngestStatus::Done, "it is removed");
    Require(Loaded().size() == added - 1, "one entry is gone");
}

} // namespace

void TestInput(Input input) {
    const std::string bytes(AsText(input));
    MemoryFiles folder;
    folder.files[kFile] = bytes;
    const platform::ScopedFileSystem inPlace(folder);
    IngestList list;
    IngestResult result;
    if (LoadIngestList(kRoot, list, result)) {
        CheckAddAndRemove(list.size());
        return;
    }
    Require(AddToIngestList(kRoot, {{kClip, {{3, 4}}}}).status == result.status &&
                folder.files[kFile] == bytes,
            "what is no list stays as it is");
    std::unique_ptr<platform::Folder> opened;
    Require(static_cast<bool>(folder.OpenFolder(kOnlyPath, opened)), "it opens");
    ingest::AddToFile(*opened, ingest::UserData(kRoot), L"Ingest.xml",
                      {{kClip, {{3, 4}}}, {L"other", {{5, 6}}}});
    Require(result.status == IngestStatus::Foreign ||
                folder.files[std::string(kFile) + ".unreadable1"] == bytes,
            "what cannot be read is kept aside");
    CMarkupMSXML saved;
    Require(saved.Load(ingest::UserData(kRoot).PathOf(L"Ingest.xml")) != 0,
            "what was saved is sound");
    Require(result.status == IngestStatus::Foreign || Loaded().size() == 2,
            "a new list holds all that was added");
}

} // namespace nqp2::fuzz
