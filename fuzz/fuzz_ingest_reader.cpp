// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Bytes as a card's ingest list: read, extended, and a clip taken out again.

#include "fuzz/measured_input.h"
#include "fuzz/require.h"
#include "ingest/ingest_file.h"
#include "ingest/IngestList.h"
#include "platform/case_fold.h"
#include "platform/file_system.h"
#include "xml/MarkupMSXML.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using nqp2::IngestList;
using nqp2::IngestResult;
using nqp2::IngestStatus;
using nqp2::fuzz::Require;
using nqp2::platform::EntryKind;
using nqp2::platform::FileInfo;
using nqp2::platform::FolderEntry;
using nqp2::platform::IoError;
using nqp2::platform::IoStatus;

constexpr const wchar_t* kRoot = L"/nqp2-fuzz";
constexpr const wchar_t* kClip = L"0001AA";

/// The files of one folder, in memory.
class OneFolder final : public nqp2::platform::FileSystem {
public:
    std::map<std::string, std::string> files; ///< by name

    IoStatus Stat(const std::string& path, FileInfo& info) override {
        if (path.ends_with('/')) {
            info.kind = EntryKind::Folder;
            return {};
        }
        const auto found = files.find(NameOf(path));
        if (found == files.end()) {
            return Missing();
        }
        info.kind = EntryKind::File;
        info.size = found->second.size();
        return {};
    }
    IoStatus List(const std::string&, std::vector<FolderEntry>& entries) override {
        entries.clear();
        for (const auto& [name, content] : files) {
            entries.push_back({name, EntryKind::File});
        }
        return {};
    }
    IoStatus Open(const std::string&, std::unique_ptr<nqp2::platform::FileReader>&) override {
        return Missing();
    }
    IoStatus Read(const std::string& path, std::uint64_t, std::string& content) override {
        const auto found = files.find(NameOf(path));
        if (found == files.end()) {
            return Missing();
        }
        content = found->second;
        return {};
    }
    IoStatus WriteWhole(const std::string& path, std::string_view content) override {
        files[NameOf(path)] = content;
        return {};
    }
    IoStatus FreeSpace(const std::string&, std::uint64_t&) override { return Missing(); }
    IoStatus RemoveFile(const std::string&) override { return Missing(); }
    IoStatus MoveToFree(const std::string& from, const std::string& to) override {
        const auto found = files.find(NameOf(from));
        if (found == files.end()) {
            return Missing();
        }
        if (!files.emplace(NameOf(to), found->second).second) {
            return {IoError::Exists, "taken"};
        }
        files.erase(found);
        return {};
    }
    IoStatus MakeFolder(const std::string&) override { return {}; }
    IoStatus Create(const std::string&, std::unique_ptr<nqp2::platform::FileWriter>&) override {
        return Missing();
    }
    IoStatus RemoveAbandoned(const std::string&) override { return {}; }

private:
    static std::string NameOf(const std::string& path) {
        return path.substr(path.find_last_of('/') + 1);
    }
    static IoStatus Missing() { return {IoError::NotFound, "missing"}; }
};

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
    OneFolder folder;
    folder.files["Ingest.xml"] = bytes;
    const nqp2::platform::ScopedFileSystem inPlace(folder);
    IngestList list;
    IngestResult result;
    if (nqp2::LoadIngestList(kRoot, list, result)) {
        CheckAddAndRemove(list);
        return 0;
    }
    Require(nqp2::AddToIngestList(kRoot, {{kClip, {{3, 4}}}}).status == result.status &&
                folder.files["Ingest.xml"] == bytes,
            "what is no list stays as it is");
    nqp2::ingest::AddToFile(nqp2::ingest::UserDataFolder(kRoot), L"Ingest.xml",
                            {{kClip, {{3, 4}}}, {L"other", {{5, 6}}}});
    Require(result.status == IngestStatus::Foreign ||
                folder.files["Ingest.xml.unreadable1"] == bytes,
            "what cannot be read is kept aside");
    CMarkupMSXML saved;
    Require(saved.Load(nqp2::ingest::UserDataFolder(kRoot) + L"Ingest.xml") != 0,
            "what was saved is sound");
    return 0;
}
