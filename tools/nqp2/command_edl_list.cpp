// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/card.h"
#include "tools/nqp2/clip_length.h"
#include "tools/nqp2/csv.h"
#include "tools/nqp2/edl_commands.h"
#include "tools/nqp2/edl_fields.h"
#include "tools/nqp2/json_output.h"
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
};

/// Edit lists lie in the card's root or in its CONTENTS folder; both are asked for.
CArray<tag_P2EDL> LoadEdls(const Card& card) {
    ReadyParser parser;
    CArray<tag_P2EDL> edls;
    const bool inRoot = parser->LoadEdl(card.Root(), edls) == 0;
    const bool inContents = parser->LoadEdl(card.ContentsRoot(), edls) == 0;
    if (!inRoot && !inContents) {
        card.RequireContents();
    }
    std::stable_sort(edls.begin(), edls.end(), [](const tag_P2EDL& left, const tag_P2EDL& right) {
        return left.Name.CompareNoCase(right.Name) < 0;
    });
    return edls;
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
    const CArray<tag_P2EDL> edls = LoadEdls(Card(options.card));
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
    return kDone;
}

} // namespace

void AddEdlListCommand(CLI::App& group, Action& chosen) {
    const auto options = std::make_shared<EdlListOptions>();
    CLI::App* command = group.add_subcommand("list", "List the edit lists of a card");
    AddCardArgument(*command, options->card);
    auto* json = command->add_flag("--json", options->json, "Print JSON, every field");
    command->add_flag("--csv", options->csv, "Print comma-separated values, every field")
        ->excludes(json);
    SetExample(*command, "nqp2 edl list /media/card --json");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunEdlList(console, *options); };
    });
}

} // namespace nqp2::tool
