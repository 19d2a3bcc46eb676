// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/console.h"
#include "console/table.h"
#include "console/value.h"
#include "nqp2/card_entry.h"
#include "nqp2/clip_table.h"
#include "nqp2/command.h"
#include "nqp2/edl_fields.h"
#include "nqp2/record_output.h"
#include "nqp2/scan_report_output.h"

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <vector>

namespace nqp2::tool {
namespace {

struct EdlOptions {
    std::string card;
    OutputForm form;
    bool strict = false;
};

/// Readers of playlists alone fill the record of each clip that is there.
Row EdlRow(const tag_P2EDL& edl, bool isPlaylist) {
    std::string clips;
    for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
        clips += (clips.empty() ? "" : " ") + BytesFromText(event.ClipName);
        clips += isPlaylist && event.Clip.ClipName.IsEmpty() ? " (missing)" : "";
    }
    return {BytesFromText(edl.Name),
            fmt::format("{}", edl.Events.GetSize()),
            LengthText(edl.Duration, edl.FrameRate),
            BytesFromText(edl.Codec),
            BytesFromText(edl.FrameRate),
            clips};
}

void PrintEdlTable(Console& console, const CArray<tag_P2EDL>& edls, bool arePlaylists) {
    const std::vector<Column> columns = {{"EDIT", Align::Left, 8},    {"EVENTS", Align::Right, 0},
                                         {"LENGTH", Align::Right, 0}, {"CODEC", Align::Left, 12},
                                         {"RATE", Align::Left, 0},    {"CLIPS", Align::Left, 8}};
    PrintTable(console, columns, [&](const TakeRow& take) {
        for (const tag_P2EDL& edl : edls) {
            take(EdlRow(edl, arePlaylists));
        }
    });
    console.Finish();
    console.Message(fmt::format("{} edit list{}", edls.GetSize(), edls.GetSize() == 1 ? "" : "s"));
}

/// Sorted by name; with a table their number on standard error.
void PrintEdls(Console& console, CArray<tag_P2EDL>& edls, bool arePlaylists,
               const OutputForm& form) {
    std::stable_sort(edls.begin(), edls.end(), [](const tag_P2EDL& left, const tag_P2EDL& right) {
        return left.Name.CompareNoCase(right.Name) < 0;
    });
    const Sequence records = SequenceOf(edls, PutEdl);
    PrintListing(console, form,
                 {{{"edls", records}},
                  Content([](ValueSink& sink) { PutEdl(sink, {}); }),
                  records,
                  [&](Console& target) { PrintEdlTable(target, edls, arePlaylists); }});
}

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
    return scan;
}

Status RunEdlList(Console& console, const EdlOptions& options) {
    EdlScan scan = LoadEdls(EnterCard(console, options.card, {kP2Cards, L"EDITLIST"}));
    PrintEdls(console, scan.edls, false, options.form);
    console.Finish();
    return TellLosses(console, scan.report, options.strict);
}

Status RunPlaylists(Console& console, const EdlOptions& options) {
    const Card card = EnterCard(console, options.card, {kAvchdCards});
    ReadyParser parser;
    CArray<tag_P2EDL> playlists;
    ScanReport report;
    if (parser->LoadCardPlaylists(card.Root(), playlists, report) != 0) {
        card.ThrowNoPlaylists();
    }
    PrintEdls(console, playlists, true, options.form);
    console.Finish();
    return TellLosses(console, report, options.strict);
}

void AddListOptions(const Command& command, EdlOptions& options, const std::string& strict) {
    command.CardArgument(options.card);
    command.JsonAndCsvFlags(options.form, ", every field", ", every field");
    command.Flag("--strict", options.strict, strict);
}

} // namespace

void AddEdlCommand(const Command& program) {
    const Command group = program.AddGroup("edl", "Show and write edit lists");
    const Command list = group.Add("list", "List the edit lists of a card");
    AddListOptions(list, list.Runs(RunEdlList), "Exit with 4 when a file was skipped");
    list.Example("nqp2 edl list /media/card --json");
    AddEdlWriteCommand(group);
    group.Example("nqp2 edl list /media/card");
}

void AddPlaylistsCommand(const Command& program) {
    const Command command =
        program.Add("playlists", "List the playlists of an AVCHD card or disc folder");
    AddListOptions(command, command.Runs(RunPlaylists),
                   "Exit with 4 when a playlist was skipped or names a clip that is\nmissing");
    command.Example("nqp2 playlists /media/card/PRIVATE --json");
}

} // namespace nqp2::tool
