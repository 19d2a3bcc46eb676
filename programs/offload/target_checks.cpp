// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/target_checks.h"

#include "console/console.h"
#include "copy/fan.h"
#include "platform/case_fold.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <system_error>

namespace nqp2::offload {
namespace {

using platform::FileInfo;
using platform::IoStatus;
using tool::kUsage;

bool Contains(const std::vector<FileId>& ids, const FileId& id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

[[noreturn]] void ThrowInCard(const Target& target, const Plan& plan) {
    throw tool::Failure(target.folder, "lies in the card", plan.card, kUsage);
}

std::optional<FileId> IdBehind(const std::string& path) {
    FileInfo info;
    return platform::Files().Stat(path, info) ? std::optional(IdOf(info)) : std::nullopt;
}

/// What the list of one file takes, generously.
constexpr std::uint64_t kListedFile = 1024;
constexpr std::uint64_t kSpare = std::uint64_t{4} << 20U;

/// What a target still has to take: a file that is there with its size is not copied again, as far
/// as can be told before it is read.
std::uint64_t BytesToCome(const Plan& plan, const Target& target) {
    const mhl::Tree& tree = plan.index.tree;
    std::uint64_t sum = kSpare;
    for (mhl::NodeId node = 1; node < tree.Size(); ++node) {
        sum += kListedFile;
        if (tree.IsFolder(node)) {
            sum += copy::SpaceTaken(0);
            continue;
        }
        const std::uint64_t size = tree.SizeOf(node).value_or(0);
        FileInfo there;
        const bool isThere =
            target.state != TargetState::New &&
            platform::Files().Stat(platform::PathIn(target.path, tree.PathOf(node)), there) &&
            there.size == size;
        sum += isThere ? 0 : copy::SpaceTaken(size);
    }
    return sum;
}

/// Targets of one file system share its free space.
void RequireSpace(const Plan& plan) {
    std::map<std::uint64_t, std::uint64_t> wanted;
    for (const Target& target : plan.targets) {
        std::uint64_t& sum = wanted[target.upward.front().device];
        sum += BytesToCome(plan, target);
        std::uint64_t free = 0;
        if (const IoStatus status = target.opened->UsableSpace(free); !status) {
            throw tool::Failure(target.folder, "does not tell its free space", status.reason);
        }
        if (free < sum) {
            throw tool::Failure(target.folder, "has too little free space",
                                fmt::format("{} bytes are needed, {} are free", sum, free));
        }
    }
}

void RequireSizes(const Plan& plan, const Target& target) {
    if (plan.index.largest == mhl::kNoNode) {
        return;
    }
    const std::uint64_t size = plan.index.tree.SizeOf(plan.index.largest).value_or(0);
    if (size > target.medium.largestFile) {
        throw tool::Failure(target.folder, "takes no file as large as one of the card's",
                            fmt::format("{} has {} bytes, {} can be at most",
                                        plan.index.tree.PathOf(plan.index.largest), size,
                                        target.medium.largestFile));
    }
}

/// Two entries of a folder whose names a target that ignores letter case takes for one.
std::optional<std::string> NamesThatFallTogether(const mhl::Tree& tree) {
    for (mhl::NodeId folder = 0; folder < tree.Size(); ++folder) {
        std::map<std::string, mhl::NodeId> names;
        const bool isFolder = tree.IsFolder(folder);
        for (mhl::NodeId child = isFolder ? tree.FirstChild(folder) : mhl::kNoNode;
             child != mhl::kNoNode; child = tree.NextSibling(child)) {
            const auto [place, isNew] =
                names.emplace(platform::FoldNameCase(tree.NameOf(child)), child);
            if (!isNew) {
                return fmt::format("{} and {}", tree.PathOf(place->second), tree.PathOf(child));
            }
        }
    }
    return std::nullopt;
}

void RequireNames(const Plan& plan) {
    const std::optional<std::string> pair = NamesThatFallTogether(plan.index.tree);
    if (!pair) {
        return;
    }
    for (const Target& target : plan.targets) {
        bool isBlind = true;
        const IoStatus status = target.opened->IsCaseBlind(isBlind);
        if (!status || isBlind) {
            throw tool::Failure(target.folder, "takes names of the card for one",
                                *pair + (status ? "" : ": " + status.reason));
        }
    }
}

/// Why one failure may take both; "" when it cannot.
std::string SharedBy(const platform::MediumFacts& one, const platform::MediumFacts& other) {
    if (!one.server.empty() && one.server == other.server) {
        return "are on one server";
    }
    if (platform::AreApart(one, other)) {
        return "";
    }
    return one.disks.empty() || other.disks.empty() ? "are not known to be on disks of their own"
                                                    : "are on one disk";
}

} // namespace

void RequireOwnPlaces(const Plan& plan) {
    const std::vector<FileId> card = IdsUpward(plan.card);
    std::vector<FileId> seen;
    for (const Target& target : plan.targets) {
        if (card.empty() || target.upward.empty()) {
            throw tool::Failure(target.folder, "cannot be told from the card", "");
        }
        if (Contains(target.upward, card.front())) {
            ThrowInCard(target, plan);
        }
        if (Contains(seen, target.upward.front())) {
            throw tool::Failure(target.folder, "is the same place as another target", "", kUsage);
        }
        seen.push_back(target.upward.front());
    }
}

void RequireOutside(const Plan& plan, const std::string& path, const FileInfo& folder) {
    for (const Target& target : plan.targets) {
        // By a folder that is mounted twice: its own path leads elsewhere.
        if (!path.empty() && Contains(target.upward, IdOf(folder))) {
            ThrowInCard(target, plan);
        }
    }
}

void RequireApart(const Plan& plan) {
    const std::vector<FileId> card = IdsUpward(plan.card);
    for (const Target& target : plan.targets) {
        const std::optional<FileId> copy = IdBehind(target.path);
        if (!copy) {
            continue;
        }
        if (Contains(card, *copy)) {
            throw tool::Failure(target.path,
                                *copy == card.front() ? "is the card itself" : "holds the card", "",
                                kUsage);
        }
        for (const Target& other : plan.targets) {
            if (Contains(other.upward, *copy)) {
                throw tool::Failure(other.folder, "lies in the copy at another target", target.path,
                                    kUsage);
            }
        }
    }
}

void RequireOwnLog(const Plan& plan, const std::string& log) {
    if (log.empty()) {
        return;
    }
    // Whatever the path is a link to is written.
    std::error_code error;
    const std::filesystem::path whole =
        std::filesystem::weakly_canonical(std::filesystem::absolute(log, error), error);
    const std::string folder = whole.parent_path().string();
    FileInfo info;
    if (error || !platform::Files().Stat(folder, info) ||
        info.kind != platform::EntryKind::Folder || std::filesystem::is_directory(whole, error) ||
        std::filesystem::is_symlink(whole, error)) { // which leads to nothing
        throw tool::Failure(log, "cannot be written", "it is no file in a folder that is there");
    }
    const std::vector<FileId> upward = IdsUpward(folder);
    const std::optional<FileId> card = IdBehind(plan.card);
    if (!card || Contains(upward, *card)) {
        throw tool::Failure(log, "lies in the card", plan.card, kUsage);
    }
    for (const Target& target : plan.targets) {
        const std::optional<FileId> copy = IdBehind(target.path);
        const bool isItself =
            upward.front() == target.upward.front() && whole.filename() == plan.name;
        if (isItself || (copy && Contains(upward, *copy))) {
            throw tool::Failure(log, "lies in a copy", target.path, kUsage);
        }
    }
}

void RequireRoom(const Plan& plan) {
    for (const Target& target : plan.targets) {
        if (target.medium.isReadOnly) {
            throw tool::Failure(target.folder, "cannot be written", "its medium is read-only");
        }
        RequireSizes(plan, target);
    }
    RequireNames(plan);
    RequireSpace(plan);
}

void WarnOfSharedDisks(Plan& plan) {
    for (auto one = plan.targets.begin(); one != plan.targets.end(); ++one) {
        for (auto other = one + 1; other != plan.targets.end(); ++other) {
            const std::string why = SharedBy(one->medium, other->medium);
            if (!why.empty()) {
                plan.warnings.push_back(
                    fmt::format("{} and {} {}", one->folder, other->folder, why));
            }
        }
        if (!one->medium.disks.empty() && SharedBy(one->medium, plan.medium) == "are on one disk") {
            plan.warnings.push_back(fmt::format("{} is on the card's own disk", one->folder));
        }
    }
}

} // namespace nqp2::offload
