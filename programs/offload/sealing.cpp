// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/sealing.h"

#include "copy/failure.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/copy_watch.h"
#include "offload/list_copying.h"
#include "offload/list_head.h"
#include "offload/mhl/comparison.h"
#include "offload/unfinished_mark.h"
#include "offload/walk_changes.h"

#include <fmt/core.h>
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::offload {
namespace {

using copy::Require;
using platform::Folder;
using platform::IoError;
using platform::IoStatus;

constexpr std::string_view kAsideMark = ".differs-";

const std::string kLists(mhl::kHistoryFolder);

IoStatus MakeAndOpen(Folder& above, const std::string& name, std::unique_ptr<Folder>& folder) {
    const IoStatus status = above.MakeFolder(name);
    return status || status.error == IoError::Exists ? above.OpenFolder(name, folder) : status;
}

/// Whether a path is that of something which a run has set aside: "A/B.MXF.differs-1".
bool IsSetAside(const mhl::Tree& tree, const std::string& path) {
    const std::size_t mark = path.rfind(kAsideMark);
    return mark != std::string::npos && mark + kAsideMark.size() < path.size() &&
           path.find_first_not_of("0123456789", mark + kAsideMark.size()) == std::string::npos &&
           tree.Find(std::string_view(path).substr(0, mark)) != mhl::kNoNode;
}

/// The pattern that fits a name and nothing else.
std::string PatternOf(const std::string& name) {
    constexpr std::string_view kSpecial = "\\*?[]!# ";
    std::string pattern;
    for (const char letter : name) {
        pattern += kSpecial.find(letter) == std::string_view::npos ? "" : "\\";
        pattern += letter;
    }
    return pattern;
}

/// Looks what a copy that was there before holds beside the card, and tells what of it the list has
/// to ignore: what was set aside.
std::vector<std::string> PatternsOfCopy(const Plan& plan, const Target& target, CopyOutcome& copy) {
    if (target.state == TargetState::New) {
        return {};
    }
    std::vector<std::string> patterns;
    TellStrangeEntries(
        plan.index.tree, *target.copy, plan.ignored,
        [](const auto& /*path*/, const auto& /*info*/) { return !WasInterrupted(); },
        [&](const OddEntry& each) {
            if (IsSetAside(plan.index.tree, each.path)) {
                patterns.push_back(PatternOf(platform::NamePart(each.path)));
            } else {
                copy.strange.Add(each.path, each.why);
            }
        });
    return patterns;
}

/// Where everything came from and went to.
std::string CommentOf(const Plan& plan, std::size_t target) {
    std::vector<std::string> others;
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        if (i != target) {
            others.push_back(plan.targets[i].path);
        }
    }
    std::string comment =
        fmt::format("source: {}\ntarget: {}", plan.card, plan.targets[target].path);
    return others.empty() ? comment
                          : fmt::format("{}\nother targets: {}", comment, fmt::join(others, ", "));
}

mhl::ManifestHead HeadOf(const Plan& plan, std::size_t target) {
    mhl::ManifestHead head = NewHead(mhl::Process::Transfer);
    head.comment = CommentOf(plan, target);
    head.metadata = EntriesOf(plan.identity);
    return head;
}

/// A copy that is the card's and yet not what its own list says is nothing to rely on.
void HoldAgainstList(Plan& plan, const mhl::History& history, CopyOutcome& copy) {
    const mhl::Comparison found = mhl::Compare(history, plan.index.tree);
    for (const mhl::NodeId node : found.changed) {
        copy.failures.Add(plan.index.tree.PathOf(node), "is not what the copy's own list says");
    }
    for (const mhl::NodeId node : found.unproven) {
        copy.failures.Add(plan.index.tree.PathOf(node), "cannot be held against the copy's list");
    }
    for (const mhl::NodeId node : found.missing) {
        copy.failures.Add(history.Expected().PathOf(node), "is in the copy's list alone");
    }
    copy.proof.holdsAll = copy.failures.Count() == 0;
}

void AddGeneration(Plan& plan, std::size_t target, CopyOutcome& copy) {
    const std::string& path = plan.targets[target].path;
    mhl::History history = mhl::History::Open(plan.targets[target].copy);
    if (history.Found().Faults() != 0) {
        throw copy::Failure("The list of " + path +
                            " has faults: " + history.Found().Kept().front().Text() + ".");
    }
    for (const std::string& pattern : PatternsOfCopy(plan, plan.targets[target], copy)) {
        if (!history.Ignore(pattern)) {
            throw copy::Failure("There is too much in " + path + " that was set aside.");
        }
    }
    HoldAgainstList(plan, history, copy);
    Require(history.AddGeneration(HeadOf(plan, target), plan.index.tree, copy.lists),
            "write the list of", path);
}

/// The copy is finished from here on.
void TakeMarkAway(const Plan& plan, const Target& target) {
    std::unique_ptr<Folder> lists;
    Require(target.copy->OpenFolder(kLists, lists), "open the lists of", target.path);
    const IoStatus removed = lists->RemoveFile(std::string(kMarkFile));
    if (removed.error != IoError::NotFound) {
        Require(removed, "end", target.path);
    }
    // Media without owners let no one set times: nothing is lost.
    static_cast<void>(target.copy->KeepTime("", plan.index.InfoOf(mhl::kScope)));
    Require(target.copy->FlushAll(), "flush", target.path);
}

} // namespace

void BeginCopy(const Plan& plan, Target& target) {
    if (!target.listFault.empty()) { // it stays as it is: what it holds may be all there is of it
        throw copy::Failure("Its list has faults: " + target.listFault + ".");
    }
    const std::string lists = platform::PathIn(target.path, kLists);
    std::unique_ptr<Folder> root;
    std::unique_ptr<Folder> again;
    std::unique_ptr<Folder> below;
    platform::FileInfo begun;
    Require(MakeAndOpen(*target.opened, plan.name, root), "make the folder", target.path);
    Require(target.opened->OpenFolder(plan.name, again), "open the folder", target.path);
    Require(target.opened->Stat(plan.name, begun), "look at", target.path);
    Require(MakeAndOpen(*root, kLists, below), "make the folder", lists);
    // What a killed run has left; that it stays is no reason not to go on.
    static_cast<void>(target.opened->RemoveAbandoned());
    static_cast<void>(below->RemoveAbandoned());
    target.begun = IdOf(begun);
    target.copy = std::move(root);
    target.writing = std::move(again);
    if (!target.listsBefore) {
        target.listsBefore = ManifestsIn(*target.copy, ListFoldersOf(plan));
    }
    Require(
        below->WriteWhole(std::string(kMarkFile), MarkText({plan.identity, target.listsBefore})),
        "write", platform::PathIn(target.path, MarkPath()));
}

void SealCopy(Plan& plan, std::size_t target, CopyOutcome& copy) {
    try {
        if (plan.history && plan.history->Found().Faults() == 0) {
            CopyLists(plan, plan.targets[target]);
        }
        if (plan.targets[target].state == TargetState::Unfinished) {
            RemoveUnlisted(plan, plan.targets[target]);
        }
        if (!IsStillThere(plan, plan.targets[target])) {
            throw copy::Failure("The copy is not where it was begun: " + plan.targets[target].path);
        }
        AddGeneration(plan, target, copy);
        TakeMarkAway(plan, plan.targets[target]);
        copy.proof.isSealed = true;
    } catch (const copy::Failure& failure) {
        copy.notSealed = failure.what();
    }
}

} // namespace nqp2::offload
