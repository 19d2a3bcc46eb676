// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/card.h"
#include "tools/nqp2/clip_length.h"
#include "tools/nqp2/csv.h"
#include "tools/nqp2/edl_commands.h"
#include "tools/nqp2/edl_fields.h"
#include "tools/nqp2/json_output.h"
#include "tools/nqp2/scan_report_output.h"
#include "tools/nqp2/table.h"

#include "platform/TextBytes.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct EdlListOptions {
    std::string card;
    bool json = false;
    bool csv = false;
    bool strict = false;
};

struct EdlScan {
    CArray<tag_P2EDL> edls;
    ScanReport report;
};

EdlScan LoadEdls(const Card& card) {
    ReadyParser parser;
    EdlScan scan;
    const bool found = parser->LoadCardEdls(card.Root(), scan.edls, scan.report) == 0;
    if (!found && scan.report.skipped.IsEmpty()) {
        card.RequireContents();
    }
    std::stable_sort(scan.edls.begin(), scan.edls.end(),
                     [](const tag_P2EDL& left, const tag_P2EDL& right) {
                         return left.Name.CompareNoCase(right.Name) < 0;
                     });
    return scan;
}

/// A line for each loss; the status that they amount to.
Status TellLosses(Console& console, const ScanReport& report, bool strict) {
    Status status = kDone;
    for (const SkippedFile& file : report.skipped) {
        if (file.reason == SkipReason::FolderUnreadable) {
            console.Message(fmt::format("nqp2: {}: cannot be read to its end ({})",
                                        PositionText(file), BytesFromText(file.text)));
            status = kFailed;
        } else if (file.reason != SkipReason::Companion) { // of which nothing is lost
            console.Message(
                fmt::format("nqp2: {}: skipped ({})", PositionText(file), ReasonText(file)));
            status = strict && status == kDone ? kSkipped : status;
        }
    }
    return status;
}

void PrintEdlTable(Console& console, const CArray<tag_P2EDL>& edls) {
    Table table({{"EDIT", Align::Left, 8},
                 {"EVENTS", Align::Right, 0},
                 {"LENGTH", Align::Right, 0},
                 {"CODEC", Align::Left, 12},
                 {"RATE", Align::Left, 0},
                 {"CLIPS", Align::Left, 8}});
    for (const tag_P2EDL& edl : edls) {
        std::string clips;
        for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
            clips += (clips.empty() ? "" : " ") + BytesFromText(event.ClipName);
        }
        table.AddRow({BytesFromText(edl.Name), fmt::format("{}", edl.Events.GetSize()),
                      LengthText(edl.Duration, edl.FrameRate), BytesFromText(edl.Codec),
                      BytesFromText(edl.FrameRate), clips});
    }
    table.Print(console);
    console.Finish();
    console.Message(fmt::format("{} edit list{}", edls.GetSize(), edls.GetSize() == 1 ? "" : "s"));
}

Status RunEdlList(Console& console, const EdlListOptions& options) {
    const EdlScan scan = LoadEdls(Card(options.card));
    const CArray<tag_P2EDL>& edls = scan.edls;
    const Sequence records = {static_cast<std::size_t>(edls.GetSize()), [&edls](std::size_t index) {
                                  return Value(EdlRecord(edls[static_cast<std::int64_t>(index)]));
                              }};
    if (options.json) {
        PrintJson(console, {{"edls", records}});
    } else if (options.csv) {
        PrintCsv(console, EdlRecord({}), records);
    } else {
        PrintEdlTable(console, edls);
    }
    console.Finish();
    return TellLosses(console, scan.report, options.strict);
}

} // namespace

void AddEdlListCommand(CLI::App& group, Action& chosen) {
    const auto options = std::make_shared<EdlListOptions>();
    CLI::App* command = group.add_subcommand("list", "List the edit lists of a card");
    AddCardArgument(*command, options->card);
    auto* json = command->add_flag("--json", options->json, "Print JSON, every field");
    command->add_flag("--csv", options->csv, "Print comma-separated values, every field")
        ->excludes(json);
    command->add_flag("--strict", options->strict, "Exit with 4 when a file was skipped");
    SetExample(*command, "nqp2 edl list /media/card --json");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunEdlList(console, *options); };
    });
}

} // namespace nqp2::tool
