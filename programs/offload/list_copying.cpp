// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/list_copying.h"

#include "copy/failure.h"
#include "copy/fan.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/mhl/chain.h"
#include "offload/mhl/name_rules.h"
#include "offload/unfinished_mark.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace nqp2::offload {
namespace {

using copy::FanItem;
using copy::Require;
using platform::Folder;
using platform::FolderEntry;
using platform::PathIn;

/// Fails with the first thing that goes wrong: lists are whole or of no use.
class Strict final : public copy::FanReport {
public:
    bool GoesOn() override { return !WasInterrupted(); }
    void HasRead(const FanItem& /*file*/, const copy::Digest::Bytes& /*digest*/) override {}
    void CannotRead(const FanItem& file, const std::string& sentence) override {
        throw copy::Failure(file.path + ": " + sentence);
    }
    void HasArrived(std::size_t /*target*/, const FanItem& /*file*/,
                    copy::Arrival /*how*/) override {}
    void HasSetAside(std::size_t /*target*/, const FanItem& /*file*/,
                     const std::string& /*aside*/) override {}
    void HasFailed(std::size_t /*target*/, const FanItem& item,
                   const std::string& sentence) override {
        throw copy::Failure(item.path + ": " + sentence);
    }
    void HasEnded(std::size_t /*target*/, const std::string& sentence) override {
        throw copy::Failure(sentence);
    }
};

/// The chain in a folder of lists; nothing where there is none that can be read.
mhl::Chain ChainIn(Folder& lists) {
    constexpr std::uint64_t kLongestChain = std::uint64_t{16} << 20U;
    std::string text;
    const bool isRead =
        static_cast<bool>(lists.Read(std::string(mhl::kChainFile), kLongestChain, text));
    const auto onFault = [](int /*line*/, const std::string& /*sentence*/) {};
    return isRead ? mhl::ReadChain(text, onFault) : mhl::Chain();
}
mhl::Chain ChainBelow(Folder& root, const std::string& lists) {
    std::unique_ptr<Folder> folder;
    return OpenBelow(root, lists, folder) ? ChainIn(*folder) : mhl::Chain();
}

/// Whether the copy has a chain there that begins as the card's: it was copied before.
bool GoesOnThere(const Plan& plan, const Target& target, const std::string& lists) {
    const mhl::Chain card = ChainBelow(*plan.opened, lists);
    const mhl::Chain copy = ChainBelow(*target.copy, lists);
    return card.isWhole && copy.isWhole && card.entries.size() <= copy.entries.size() &&
           std::equal(card.entries.begin(), card.entries.end(), copy.entries.begin(),
                      [](const mhl::ChainEntry& one, const mhl::ChainEntry& other) {
                          return one.number == other.number && one.name == other.name &&
                                 one.c4 == other.c4;
                      });
}

/// The files of a folder of lists, the chain at the end. What writers have left is not copied.
std::vector<FanItem> FilesOf(const Plan& plan, const std::string& lists) {
    std::unique_ptr<Folder> folder;
    std::vector<FolderEntry> entries;
    Require(OpenBelow(*plan.opened, lists, folder), "open", PathIn(plan.card, lists));
    Require(folder->List(entries), "read", PathIn(plan.card, lists));
    std::vector<FanItem> files;
    for (const FolderEntry& entry : entries) {
        FanItem item{PathIn(lists, entry.name), {}, 0};
        Require(folder->Stat(entry.name, item.info), "read", item.path);
        if (item.info.kind == platform::EntryKind::File && !entry.name.starts_with('.')) {
            files.push_back(item);
        }
    }
    std::stable_partition(files.begin(), files.end(), [](const FanItem& file) {
        return !file.path.ends_with(mhl::kChainFile);
    });
    return files;
}

/// Whether the run that was not finished may have left a manifest: it was not there before, and
/// has a name such as this program gives.
bool IsOfThatRun(const Target& target, const std::string& path) {
    return std::find(target.listsBefore->begin(), target.listsBefore->end(), path) ==
               target.listsBefore->end() &&
           mhl::NameFault(path).empty();
}

/// Manifests in a folder of lists that its chain does not name. A killed run leaves one; all others
/// are the lists of a chain that was damaged.
std::vector<std::string> UnlistedIn(Folder& folder, const Target& target,
                                    const std::string& lists) {
    const mhl::Chain chain = ChainIn(folder);
    std::vector<std::string> unlisted;
    for (const std::string& path : ManifestsIn(*target.copy, {lists})) {
        const std::string name = platform::NamePart(path);
        const bool isNamed =
            std::any_of(chain.entries.begin(), chain.entries.end(),
                        [&](const mhl::ChainEntry& each) { return each.name == name; });
        if (isNamed) {
            continue;
        }
        if (!unlisted.empty() || !IsOfThatRun(target, path)) {
            throw copy::Failure("The chain of " + folder.Path() +
                                " does not name all of its lists.");
        }
        unlisted.push_back(name);
    }
    return unlisted;
}

} // namespace

std::vector<std::string> ListFoldersOf(const Plan& plan) {
    std::vector<std::string> folders = plan.index.histories;
    const std::string own(mhl::kHistoryFolder);
    if (std::find(folders.begin(), folders.end(), own) == folders.end()) {
        folders.push_back(own);
    }
    return folders;
}

void RemoveUnlisted(const Plan& plan, const Target& target) {
    for (const std::string& lists : ListFoldersOf(plan)) {
        std::unique_ptr<Folder> folder;
        const platform::IoStatus status = OpenBelow(*target.copy, lists, folder);
        if (status.error == platform::IoError::NotFound) {
            continue;
        }
        Require(status, "open", PathIn(target.path, lists));
        static_cast<void>(folder->RemoveAbandoned());
        std::string failed;
        Require(folder->RemoveFiles(UnlistedIn(*folder, target, lists), failed), "remove",
                PathIn(folder->Path(), failed));
    }
}

void CopyLists(const Plan& plan, const Target& target) {
    Strict report;
    copy::Fan fan(*plan.opened, {{target.path, target.writing}}, {}, report);
    for (const std::string& lists : plan.index.histories) {
        if (GoesOnThere(plan, target, lists)) {
            continue;
        }
        FanItem folder{lists, {}, 0};
        folder.info.kind = platform::EntryKind::Folder;
        fan.MakeFolder(folder);
        for (const FanItem& file : FilesOf(plan, lists)) {
            fan.Copy(file);
        }
        fan.Finish();
    }
}

} // namespace nqp2::offload
