// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/offload_output.h"

#include "console/byte_size.h"
#include "console/console.h"
#include "console/json_output.h"
#include "console/progress_bar.h"
#include "console/run_progress.h"
#include "console/value.h"
#include "NQP2ParserU/WholeFile.h"
#include "offload/odd_output.h"
#include "offload/offload_json.h"

#include <fmt/core.h>

namespace nqp2::offload {
namespace {

using tool::BytesText;
using tool::Console;

void PrintCard(Console& console, const Plan& plan) {
    const FolderIndex& index = plan.index;
    console.WriteLine(fmt::format("{}: {}{}, {} files, {}", plan.card,
                                  plan.kind.empty() ? "no card is known in it" : plan.kind,
                                  plan.identity.serial.empty() ? "" : " " + plan.identity.serial,
                                  index.tree.FileCount(), BytesText(index.bytes)));
    PrintOdd(console, "left out", index.leftOut);
    PrintOdd(console, "not read", index.unread);
    PrintOdd(console, "ignored", index.ignored);
}

void PrintCompleteness(Console& console, const Completeness& found) {
    for (const Gap& gap : found.gaps) {
        console.WriteLine(
            fmt::format("incomplete: {} {}: {}", GapWord(gap.of), gap.name, gap.problem));
    }
    if (found.clips + found.editLists != 0) {
        console.WriteLine(fmt::format("the card is {} in itself: {} clips, {} takes, {} edit lists",
                                      found.gaps.empty() ? "complete" : "NOT complete", found.clips,
                                      found.takes, found.editLists));
    }
}

std::string RootText(const Plan& plan) {
    const mhl::FolderHashes root = plan.index.tree.FolderHashesOf(mhl::kScope);
    std::string text;
    for (const mhl::HashFormatFacts& each : mhl::kHashFormats) {
        if (root.content.Has(each.format)) {
            text += fmt::format(", root {} {}", each.name, root.content.Text(each.format));
        }
    }
    return text;
}

/// "12 were there already, 1 copied anew".
std::string HowTheyCame(const CopyOutcome& copy) {
    std::string text = copy.wereThere == 0 ? "" : fmt::format(", {} were there", copy.wereThere);
    return text + (copy.copiedAnew == 0 ? "" : fmt::format(", {} copied anew", copy.copiedAnew));
}

std::string WhyNotFinished(const CopyOutcome& copy) {
    if (!copy.ended.empty() || !copy.notSealed.empty()) {
        return copy.ended.empty() ? copy.notSealed : copy.ended;
    }
    return copy.failures.Count() == 0
               ? "not all of the card arrived"
               : fmt::format("{} entries are not as they should be", copy.failures.Count());
}

void PrintCopy(Console& console, const Plan& plan, const Target& target, const CopyOutcome& copy) {
    PrintOdd(console, target.path + ": not there", copy.failures);
    PrintOdd(console, target.path + ": set aside", copy.setAside);
    PrintOdd(console, target.path + ": left alone", copy.strange);
    const std::string files =
        fmt::format("{} of {} files, {}{}", copy.files, plan.index.tree.FileCount(),
                    BytesText(copy.bytes), HowTheyCame(copy));
    if (IsProven(copy.proof)) {
        const auto rate = static_cast<std::uint64_t>(
            copy.seconds > 0 ? static_cast<double>(copy.bytes) / copy.seconds : 0);
        console.WriteLine(fmt::format("{}: proven, {}, {}, {}/s{}", target.path, files,
                                      tool::TimeText(copy.seconds), BytesText(rate),
                                      RootText(plan)));
    } else {
        console.WriteLine(
            fmt::format("{}: NOT finished, {} ({})", target.path, files, WhyNotFinished(copy)));
    }
}

} // namespace

void PrintPlan(Console& console, const Arguments& arguments, const Plan& plan) {
    if (arguments.json) {
        tool::PrintJson(console, OffloadRecord(plan, nullptr));
        return;
    }
    PrintCard(console, plan);
    PrintCompleteness(console, plan.completeness);
    for (const Target& target : plan.targets) {
        console.WriteLine(fmt::format(
            "{}: {}", target.path,
            target.state == TargetState::New
                ? std::string("would be made")
                : fmt::format("would be gone on with, it is {}", StateWord(target.state))));
    }
}

void PrintOutcome(Console& console, const Arguments& arguments, const Plan& plan,
                  const Outcome& outcome) {
    if (arguments.json) {
        tool::PrintJson(console, OffloadRecord(plan, &outcome));
        return;
    }
    PrintCard(console, plan);
    PrintOdd(console, "not read", outcome.cannotRead);
    PrintOdd(console, "read otherwise", outcome.readOtherwise);
    PrintOdd(console, "changed meanwhile", outcome.changes);
    for (const std::string& fault : outcome.againstHistory) {
        console.WriteLine("against the card's own list: " + fault);
    }
    PrintCompleteness(console, plan.completeness);
    for (std::size_t i = 0; i < plan.targets.size(); ++i) {
        PrintCopy(console, plan, plan.targets[i], outcome.copies[i]);
    }
    console.WriteLine(VerdictText(outcome.verdict));
}

std::string WriteLog(const Arguments& arguments, const Plan& plan, const Outcome& outcome) {
    return arguments.log.empty()
               ? ""
               : WriteWholeFile(arguments.log, tool::JsonText(OffloadRecord(plan, &outcome)));
}

} // namespace nqp2::offload
