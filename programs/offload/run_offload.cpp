// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/run_offload.h"

#include "console/run_progress.h"
#include "copy/failure.h"
#include "NQP2ParserU/Interrupt.h"
#include "offload/copy_watch.h"
#include "offload/copying.h"
#include "offload/mhl/comparison.h"
#include "offload/offload_output.h"
#include "offload/sealing.h"
#include "offload/sums_file.h"
#include "offload/walk_changes.h"

#include <fmt/core.h>

#include <algorithm>

namespace nqp2::offload {
namespace {

bool GoesOn() {
    return !WasInterrupted();
}

/// A target that cannot even be begun takes no part.
void BeginCopies(Plan& plan, tool::RunProgress& progress, Outcome& outcome) {
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        CopyOutcome& copy = outcome.copies[i];
        copy.proof.folder = plan.targets[i].path;
        copy.proof.medium = plan.targets[i].medium;
        try {
            BeginCopy(plan, plan.targets[i]);
        } catch (const copy::Failure& failure) {
            copy.ended = fmt::format("Cannot begin the copy: {}", failure.what());
            progress.Fail("", copy.proof.folder, copy.ended);
        }
    }
}

void ProveCopies(const Plan& plan, Outcome& outcome) {
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        CopyOutcome& copy = outcome.copies[i];
        if (copy.ended.empty() && !IsStillThere(plan, plan.targets[i])) {
            copy.ended = "It is not on the medium any more on which it was begun.";
        }
        copy.proof.holdsAll = copy.ended.empty() && copy.failures.Count() == 0 &&
                              copy.files == plan.index.tree.FileCount();
    }
}

void LookForChanges(const Plan& plan, Outcome& outcome) {
    try {
        outcome.changes =
            ChangesSince(plan.index, *plan.opened, plan.Rules(),
                         [](const auto& /*path*/, const auto& /*info*/) { return GoesOn(); });
        outcome.card.isUnchanged = outcome.changes.Count() == 0;
    } catch (const copy::Failure& failure) {
        outcome.changes.Add("", failure.what());
    }
}

/// What is wrong with the card by the lists that it brings.
void HoldAgainstHistory(Plan& plan, Outcome& outcome) {
    std::vector<std::string>& faults = outcome.againstHistory;
    if (plan.isUnfinishedCopy) {
        faults.emplace_back("it is itself a copy that was not finished");
    }
    if (plan.history) {
        const mhl::Findings& found = plan.history->Found();
        for (const mhl::Finding& finding : found.Kept()) {
            if (finding.isFault) {
                faults.push_back(finding.Text());
            }
        }
        const mhl::Comparison comparison = mhl::Compare(*plan.history, plan.index.tree);
        for (const mhl::NodeId node : comparison.changed) {
            faults.push_back(plan.index.tree.PathOf(node) + " is not what its list says");
        }
        for (const mhl::NodeId node : comparison.unproven) {
            faults.push_back(plan.index.tree.PathOf(node) + " cannot be held against its list");
        }
        for (const mhl::NodeId node : comparison.missing) {
            faults.push_back(plan.history->Expected().PathOf(node) + " is missing");
        }
    }
    outcome.card.againstHistory = faults.size();
}

/// Why no copy of this card can be finished; "" when it can.
std::string WhyUnfinished(const Arguments& arguments, const Outcome& outcome) {
    if (outcome.wasCancelled) {
        return "cancelled";
    }
    if (outcome.card.unread != 0) {
        return "not all of the card could be read";
    }
    if (!outcome.card.isUnchanged) {
        return "the card did not stay as it was";
    }
    // Where no copy holds all there is no second reading.
    return !arguments.noVerifySource && outcome.card.isReadTwice && !outcome.card.readingsAgree
               ? "two readings of the card did not agree"
               : "";
}

/// A copy without the sums that were asked for is not what was asked for.
void TryWriteSums(const Plan& plan, std::size_t target, tool::RunProgress& progress,
                  CopyOutcome& copy) {
    try {
        WriteSums(plan, target, copy);
    } catch (const copy::Failure& failure) {
        copy.failures.Add("", failure.what());
        copy.proof.holdsAll = false;
        progress.Fail("", copy.proof.folder, failure.what());
    }
}

/// Proven was each file at its moment: what became of it since is looked at by all of them.
void LookAgainAt(const Plan& plan, std::size_t target, tool::RunProgress& progress,
                 CopyOutcome& copy) {
    if (copy.proof.holdsAll) {
        LookAgain(plan, plan.targets[target], copy);
        if (!copy.proof.holdsAll) {
            progress.Fail("", copy.proof.folder, copy.ended);
        }
    }
}

void Seal(Plan& plan, const Arguments& arguments, tool::RunProgress& progress, Outcome& outcome,
          Clock::time_point begin) {
    const std::string why = WhyUnfinished(arguments, outcome);
    plan.index.tree.HashFolders(plan.FormatsToMake());
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        CopyOutcome& copy = outcome.copies[i];
        copy.notSealed = why;
        if (why.empty()) {
            LookAgainAt(plan, i, progress, copy);
        }
        if (why.empty() && copy.proof.holdsAll) {
            SealCopy(plan, i, copy);
        }
        if (copy.proof.isSealed && !arguments.sums.empty()) {
            TryWriteSums(plan, i, progress, copy);
        }
        if (copy.proof.holdsAll && !copy.notSealed.empty() && why.empty()) {
            progress.Fail("", copy.proof.folder, copy.notSealed);
        }
        copy.seconds = SecondsSince(begin);
    }
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        LookAgainAt(plan, i, progress, outcome.copies[i]);
    }
}

bool HoldsAll(const Outcome& outcome) {
    return std::any_of(outcome.copies.begin(), outcome.copies.end(),
                       [](const CopyOutcome& copy) { return copy.proof.holdsAll; });
}

} // namespace

Outcome Offload(Plan& plan, const Arguments& arguments, tool::RunProgress& progress,
                std::uint64_t farBehind) {
    const Clock::time_point begin = Clock::now();
    Outcome outcome;
    outcome.copies.resize(plan.targets.size());
    outcome.card.medium = plan.medium;
    outcome.card.partOf = plan.partOf;
    outcome.card.leftOut = plan.index.leftOut.Count();
    if (!plan.history && !plan.isUnfinishedCopy) {
        outcome.card.againstHistory = 0; // there is nothing to hold it against
    }
    BeginCopies(plan, progress, outcome);
    SecondReading again(plan.index, *plan.opened, outcome.readOtherwise, progress, farBehind);
    CopyCard(plan, progress, arguments.noVerifySource ? nullptr : &again, outcome);
    ProveCopies(plan, outcome);
    outcome.card.unread = plan.index.unread.Count() + outcome.cannotRead.Count();
    if (!outcome.wasCancelled && HoldsAll(outcome) && !arguments.noVerifySource) {
        ReadCardAgain(plan, progress, again, outcome);
    }
    if (!outcome.wasCancelled) {
        LookForChanges(plan, outcome);
        HoldAgainstHistory(plan, outcome);
        outcome.wasCancelled = WasInterrupted();
    }
    Seal(plan, arguments, progress, outcome, begin);
    outcome.verdict = JudgeOutcome(outcome);
    outcome.seconds = SecondsSince(begin);
    return outcome;
}

Verdict JudgeOutcome(const Outcome& outcome) {
    std::vector<TargetProof> proofs;
    for (const CopyOutcome& copy : outcome.copies) {
        proofs.push_back(copy.proof);
    }
    return Judge(outcome.card, proofs);
}

tool::Status StatusOf(const Outcome& outcome, const Arguments& arguments) {
    if (outcome.verdict.independent < arguments.copies) {
        return tool::kSkipped;
    }
    const bool isProven = std::all_of(outcome.copies.begin(), outcome.copies.end(),
                                      [](const CopyOutcome& copy) { return IsProven(copy.proof); });
    const CardProof& card = outcome.card;
    return isProven && card.leftOut == 0 && card.unread == 0 && card.againstHistory == 0
               ? tool::kDone
               : tool::kFailed;
}

tool::Status RunOffload(tool::Console& console, const Arguments& arguments) {
    CatchInterrupt();
    tool::RunProgress progress(tool::ProgressFormNamed(arguments.progress));
    try {
        Plan plan = MakePlan(arguments, GoesOn);
        for (const std::string& warning : plan.warnings) {
            progress.Remark(warning);
        }
        if (arguments.dryRun) {
            PrintPlan(console, arguments, plan);
            return tool::kDone;
        }
        const Outcome outcome = Offload(plan, arguments, progress);
        progress.Clear();
        const std::string problem = WriteLog(arguments, plan, outcome);
        PrintOutcome(console, arguments, plan, outcome);
        if (!problem.empty()) {
            throw tool::Failure(arguments.log, "cannot be written", problem);
        }
        return StatusOf(outcome, arguments);
    } catch (const copy::Failure& failure) {
        throw tool::Failure(arguments.card, "not copied", failure.what());
    }
}

} // namespace nqp2::offload
