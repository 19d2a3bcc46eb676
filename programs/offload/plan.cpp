// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/plan.h"

#include "console/console.h"
#include "offload/card_names.h"
#include "offload/target_checks.h"
#include "offload/unfinished_mark.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <utility>

namespace nqp2::offload {
namespace {

using platform::IoStatus;
using tool::kUsage;

constexpr int kMostCounted = 9999;

void OpenCard(Plan& plan) {
    std::unique_ptr<platform::Folder> opened;
    if (const IoStatus status = platform::Files().OpenFolder(plan.card, opened); !status) {
        throw tool::Failure(plan.card, "is no folder that can be copied", status.reason);
    }
    plan.opened = std::move(opened);
    static_cast<void>(plan.opened->Medium(plan.medium));
}

void WalkCard(Plan& plan, const std::function<bool()>& goesOn) {
    const OnFolder onFolder = [&](const std::string& path, const platform::FileInfo& info) {
        RequireOutside(plan, path, info);
        return goesOn();
    };
    WalkFolder(*plan.opened, plan.Rules(), onFolder, plan.index);
    const bool isEmpty = plan.index.tree.Size() == 1 && plan.index.leftOut.Count() == 0;
    if (isEmpty && plan.index.unread.Count() == 0) {
        throw tool::Failure(plan.card, "is empty", "is the card mounted?");
    }
}

/// The card's own lists: everything about them that is wrong is in the history's findings.
void ReadHistory(Plan& plan) {
    mhl::History history = mhl::History::Open(plan.opened);
    if (history.Exists() || !history.NestedFolders().empty()) {
        plan.history.emplace(std::move(history));
    }
    platform::FileInfo info;
    const IoStatus mark = platform::Files().Stat(platform::PathIn(plan.card, MarkPath()), info);
    plan.isUnfinishedCopy = mark.error != platform::IoError::NotFound;
}

mhl::FormatSet FormatsOf(const Arguments& arguments) {
    const mhl::FormatSet wished =
        arguments.hashes.empty() ? mhl::HashFormat::Xxh128 : FormatsNamed(arguments.hashes);
    return wished | FormatsNamed(arguments.sums);
}

bool Is(const Target& target, TargetState state) {
    return target.state == state;
}

/// Whether all targets can take the card under the name; they are looked at for it.
bool LookAtAll(Plan& plan, const std::string& name) {
    for (Target& target : plan.targets) {
        LookAt(target, name, plan.identity);
    }
    return std::none_of(plan.targets.begin(), plan.targets.end(),
                        [](const Target& target) { return Is(target, TargetState::Taken); });
}

void RequireName(const std::string& name, bool isGiven) {
    if (!isGiven && IsGenericName(name)) {
        throw tool::Failure(name.empty() ? "/" : name, "says nothing about the card",
                            "give its copy a name with --name", kUsage);
    }
    if (const std::string fault = FaultOfName(name); !fault.empty()) {
        throw tool::Failure((isGiven ? "--name " : "") + name, "cannot be the name of a copy",
                            fault + (isGiven ? "" : "; give it another one with --name"), kUsage);
    }
}

[[noreturn]] void ThrowTaken(const Plan& plan) {
    const auto taken = std::find_if(plan.targets.begin(), plan.targets.end(),
                                    [](const auto& each) { return Is(each, TargetState::Taken); });
    throw tool::Failure(taken->path, "is there already",
                        taken->whyTaken + "; give this card another --name");
}

/// The first number under which this card's copy was begun or nothing is. A finished copy is gone
/// on with as well: the number does not grow by running twice.
std::string CountedName(Plan& plan, const std::string& pattern, const NameFacts& facts) {
    for (int counter = 1; counter <= kMostCounted; ++counter) {
        std::string name = FillName(pattern, facts, counter);
        RequireName(name, true);
        if (LookAtAll(plan, name)) {
            RequireApart(plan);
            return name;
        }
    }
    throw tool::Failure("--name " + pattern, "has no free number", "", kUsage);
}

void NameCopies(Plan& plan, const std::string& pattern, const NameFacts& facts) {
    if (HasCounter(pattern)) {
        plan.name = CountedName(plan, pattern, facts);
        return;
    }
    plan.name = pattern.empty() ? facts.card : FillName(pattern, facts, 1);
    RequireName(plan.name, !pattern.empty());
    const bool isFree = LookAtAll(plan, plan.name);
    RequireApart(plan);
    if (!isFree) {
        ThrowTaken(plan);
    }
}

/// Against other runs into the same places; what one of them has begun meanwhile is seen.
void Lock(Plan& plan) {
    for (Target& target : plan.targets) {
        const IoStatus status = target.opened->LockName(plan.name, target.lock);
        if (status.error == platform::IoError::Busy) {
            throw tool::Failure(target.path, "is being written", "by another run of this program");
        }
        if (!status) {
            throw tool::Failure(target.path, "cannot be written", status.reason);
        }
    }
    if (!LookAtAll(plan, plan.name)) {
        ThrowTaken(plan);
    }
}

} // namespace

mhl::FormatSet Plan::FormatsToMake() const {
    mhl::FormatSet all = history ? formats | history->Formats() : formats;
    for (const Target& target : targets) {
        all |= target.formats;
    }
    return all;
}

Plan MakePlan(const Arguments& arguments, const std::function<bool()>& goesOn) {
    Plan plan;
    plan.card = arguments.card;
    plan.formats = FormatsOf(arguments);
    OpenCard(plan);
    for (const std::string& folder : arguments.targets) {
        plan.targets.push_back(OpenTarget(folder));
    }
    RequireOwnPlaces(plan);
    ReadHistory(plan);
    WalkCard(plan, goesOn);
    {
        const GivenFolder given = ReadGivenFolder(plan.card);
        plan.kind = KindText(given);
        plan.partOf = given.partOf;
        plan.completeness = CheckCompleteness(given);
        plan.identity = IdentityOf(given, plan.index);
        NameCopies(plan, arguments.name,
                   NameFactsOf(plan.card, given, plan.index, plan.identity, arguments.name));
    }
    RequireOwnLog(plan, arguments.log);
    RequireRoom(plan);
    if (!arguments.dryRun) {
        Lock(plan);
    }
    WarnOfSharedDisks(plan);
    return plan;
}

} // namespace nqp2::offload
