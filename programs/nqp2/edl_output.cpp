// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/edl_output.h"

#include "nqp2/clip_length.h"
#include "nqp2/console.h"
#include "nqp2/csv.h"
#include "nqp2/edl_fields.h"
#include "nqp2/json_output.h"
#include "nqp2/table.h"
#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <string>

namespace nqp2::tool {
namespace {

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

} // namespace

void AddEdlForm(CLI::App& command, EdlForm& form) {
    auto* json = command.add_flag("--json", form.json, "Print JSON, every field");
    command.add_flag("--csv", form.csv, "Print comma-separated values, every field")
        ->excludes(json);
}

void PrintEdls(Console& console, CArray<tag_P2EDL>& edls, const EdlForm& form) {
    std::stable_sort(edls.begin(), edls.end(), [](const tag_P2EDL& left, const tag_P2EDL& right) {
        return left.Name.CompareNoCase(right.Name) < 0;
    });
    const Sequence records = SequenceOf(edls, EdlRecord);
    if (form.json) {
        PrintJson(console, {{"edls", records}});
    } else if (form.csv) {
        PrintCsv(console, EdlRecord({}), records);
    } else {
        PrintEdlTable(console, edls);
    }
}

} // namespace nqp2::tool
