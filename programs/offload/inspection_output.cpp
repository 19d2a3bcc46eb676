// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/inspection_output.h"

#include "console/byte_size.h"
#include "console/console.h"
#include "console/progress_bar.h"
#include "console/run_progress.h"
#include "offload/arguments.h"
#include "offload/inspection.h"
#include "offload/inspection_json.h"
#include "offload/odd_output.h"

#include <fmt/core.h>

#include <algorithm>
#include <functional>

namespace nqp2::offload {
namespace {

using mhl::NodeId;

using NodePath = std::function<std::string(NodeId)>;

void PrintNodes(tool::Console& console, std::string_view word, const std::vector<NodeId>& nodes,
                const NodePath& pathOf) {
    for (const NodeId node : nodes) {
        console.WriteLine(fmt::format("{}: {}", word, pathOf(node)));
    }
}

void PrintFindings(tool::Console& console, const mhl::Findings& findings) {
    for (const mhl::Finding& each : findings.Kept()) {
        console.WriteLine(fmt::format("{}: {}", each.isFault ? "history" : "remark", each.Text()));
    }
    if (findings.Count() > findings.Kept().size()) {
        console.WriteLine(
            fmt::format("history: and {} more", findings.Count() - findings.Kept().size()));
    }
}

/// What weighs most comes last, where it is seen.
void PrintFaults(tool::Console& console, const Inspection& inspection) {
    const mhl::Comparison& found = inspection.comparison;
    const mhl::Tree& expected = inspection.history.Expected();
    const auto here = [&](NodeId node) {
        return node == mhl::kScope ? "." : inspection.index.tree.PathOf(node);
    };
    const auto before = [&](NodeId node) { return expected.PathOf(node); };
    // Where there was no history, all is new.
    if (inspection.history.Exists()) {
        PrintNodes(console, "folder new", found.addedFolders, here);
        PrintNodes(console, "new", found.added, here);
    }
    PrintOdd(console, "not in the list", inspection.index.leftOut);
    for (const mhl::Renamed& each : found.renamed) {
        console.WriteLine(fmt::format("renamed: {} (was {})", here(each.now), before(each.before)));
    }
    PrintNodes(console, "folder changed", found.changedFolders, here);
    PrintNodes(console, "folder missing", found.missingFolders, before);
    PrintNodes(console, "missing", found.missing, before);
    PrintNodes(console, "unproven", found.unproven, here);
    PrintOdd(console, "unreadable", inspection.index.unread);
    PrintOdd(console, "unreadable", inspection.unreadable);
    PrintNodes(console, "changed", found.changed, here);
    PrintFindings(console, inspection.history.Found());
}

void PrintSum(tool::Console& console, const Inspection& inspection) {
    const double seconds = std::max(inspection.seconds, 0.001);
    console.WriteLine(fmt::format("{}: {} files, {} in {}, {}/s", inspection.folder,
                                  inspection.filesRead, tool::BytesText(inspection.bytesRead),
                                  tool::TimeText(seconds),
                                  tool::BytesText(static_cast<std::uint64_t>(
                                      static_cast<double>(inspection.bytesRead) / seconds))));
    const mhl::FolderHashes root = inspection.index.tree.FolderHashesOf(mhl::kScope);
    for (const mhl::HashFormatFacts& each : mhl::kHashFormats) {
        if (root.content.Has(each.format)) {
            console.WriteLine(
                fmt::format("root hash: {} {}", each.name, root.content.Text(each.format)));
        }
    }
}

void PrintAdded(tool::Console& console, const Inspection& inspection, const Added& added) {
    for (const mhl::AddedGeneration& each : added.generations) {
        console.WriteLine(fmt::format("generation {}: {}", each.number, each.path));
    }
    if (!added.whyNot.empty()) {
        console.Fail(
            fmt::format("{}: no generation was added ({})", inspection.folder, added.whyNot));
    }
}

/// "2 changed, 1 missing".
std::string Counts(const Inspection& inspection) {
    std::string text;
    for (const Count& each : CountsOf(inspection)) {
        if (each.isFault && each.value > 0) {
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", each.value, each.words);
        }
    }
    return text;
}

void PrintVerdict(tool::Console& console, const Inspection& inspection, const Added& added) {
    const std::uint64_t verified = inspection.comparison.verified;
    if (!inspection.history.Exists() && !added.whyNot.empty()) {
        console.WriteLine("NOT sealed: " + added.whyNot);
    } else if (inspection.IsClean()) {
        console.WriteLine(inspection.history.Exists()
                              ? fmt::format("all well: {} files are as recorded", verified)
                              : fmt::format("sealed: {} files", inspection.filesRead));
    } else {
        console.WriteLine(
            fmt::format("NOT well: {}; {} files are as recorded", Counts(inspection), verified));
    }
}

} // namespace

std::vector<Count> CountsOf(const Inspection& inspection) {
    const mhl::Comparison& found = inspection.comparison;
    const bool hasHistory = inspection.history.Exists();
    return {{"verified", "verified", found.verified, false},
            {"historyFaults", "faults of the history", inspection.history.Found().Faults(), true},
            {"changed", "changed", found.changed.size(), true},
            {"unreadable", "unreadable",
             inspection.index.unread.Count() + inspection.unreadable.Count(), true},
            {"unseen", "not to be looked at", inspection.unseen, true},
            {"unproven", "unproven", found.unproven.size(), true},
            {"missing", "missing", found.missing.size(), true},
            {"missingFolders", "folders missing", found.missingFolders.size(), true},
            {"changedFolders", "folders changed", found.changedFolders.size(), true},
            {"renamed", "renamed", found.renamed.size(), true},
            {"new", "new", found.added.size(), hasHistory},
            {"newFolders", "folders new", found.addedFolders.size(), hasHistory},
            {"leftOut", "not in the list", inspection.index.leftOut.Count(), true},
            {"ignored", "ignored", inspection.index.ignored.Count(), false}};
}

void Print(tool::Console& console, const Arguments& arguments, const Inspection& inspection,
           const Added& added) {
    if (arguments.json) {
        PrintInspectionJson(console, arguments, inspection, added);
    } else {
        PrintFaults(console, inspection);
        PrintSum(console, inspection);
        PrintAdded(console, inspection, added);
        PrintVerdict(console, inspection, added);
    }
}

} // namespace nqp2::offload
