// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/unfinished_mark.h"

#include "console/json_output.h"
#include "console/value.h"
#include "copy/failure.h"
#include "offload/mhl/chain.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace nqp2::offload {

using platform::Folder;
using platform::IoError;
using platform::IoStatus;
using platform::PathIn;

namespace {

constexpr std::uint64_t kLongestMark = std::uint64_t{16} << 20U;
constexpr const char* kMarkVersion = "version";
constexpr const char* kListsMember = "lists";

std::optional<std::vector<std::string>> ListsIn(const nlohmann::json& mark) {
    if (!mark.is_object() || !mark.contains(kListsMember) || !mark[kListsMember].is_array()) {
        return std::nullopt;
    }
    std::vector<std::string> lists;
    for (const nlohmann::json& each : mark[kListsMember]) {
        if (each.is_string()) {
            lists.push_back(each.get<std::string>());
        }
    }
    return lists;
}

} // namespace

std::string MarkPath() {
    return PathIn(std::string(mhl::kHistoryFolder), std::string(kMarkFile));
}

std::string MarkText(const UnfinishedMark& mark) {
    const std::vector<mhl::MetadataEntry> entries = EntriesOf(mark.identity);
    tool::Record text = {{kMarkVersion, 1}};
    for (const mhl::MetadataEntry& entry : entries) {
        text.push_back({entry.name, entry.value});
    }
    if (mark.lists) {
        tool::List lists;
        for (const std::string& each : *mark.lists) {
            lists.emplace_back(each);
        }
        text.push_back({kListsMember, std::move(lists)});
    }
    return tool::JsonText(text);
}

UnfinishedMark MarkInText(const std::string& text) {
    const nlohmann::json mark = nlohmann::json::parse(text, nullptr, false);
    std::vector<mhl::MetadataEntry> entries;
    for (const mhl::MetadataEntry& entry : EntriesOf({})) {
        if (mark.is_object() && mark.contains(entry.name) && mark[entry.name].is_string()) {
            entries.push_back({entry.name, mark[entry.name].get<std::string>()});
        }
    }
    return {IdentityIn(entries), ListsIn(mark)};
}

std::optional<UnfinishedMark> MarkIn(Folder& copy) {
    std::unique_ptr<Folder> lists;
    std::string text;
    if (!copy.OpenFolder(std::string(mhl::kHistoryFolder), lists) ||
        lists->Read(std::string(kMarkFile), kLongestMark, text).error == IoError::NotFound) {
        return std::nullopt;
    }
    return MarkInText(text);
}

std::vector<std::string> ManifestsIn(Folder& copy, const std::vector<std::string>& folders) {
    std::vector<std::string> manifests;
    for (const std::string& lists : folders) {
        std::unique_ptr<Folder> folder;
        const IoStatus status = OpenBelow(copy, lists, folder);
        if (status.error == IoError::NotFound) {
            continue;
        }
        std::vector<platform::FolderEntry> entries;
        copy::Require(status ? folder->List(entries) : status, "read", PathIn(copy.Path(), lists));
        for (const platform::FolderEntry& entry : entries) {
            if (entry.name.ends_with(mhl::kManifestEnding)) {
                manifests.push_back(PathIn(lists, entry.name));
            }
        }
    }
    return manifests;
}

} // namespace nqp2::offload
