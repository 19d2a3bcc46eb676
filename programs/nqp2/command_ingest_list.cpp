// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/csv.h"
#include "nqp2/ingest_commands.h"
#include "nqp2/json_output.h"
#include "nqp2/real_path.h"
#include "nqp2/table.h"

#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <memory>
#include <string>

namespace nqp2::tool {
namespace {

struct IngestListOptions {
    std::string card;
    bool json = false;
    bool csv = false;
};

using IngestClip = IngestList::value_type;

Record IngestRecord(const IngestClip& clip) {
    List segments;
    for (const tag_P2SegInfo& segment : clip.second) {
        segments.emplace_back(List{segment.InPoint, segment.OutPoint});
    }
    return {{"ClipName", BytesFromText(clip.first)}, {"segments", segments}};
}

void PrintIngestTable(Console& console, const IngestList& list) {
    Table table({{"CLIP", Align::Left, 8},
                 {"IN", Align::Right, 0},
                 {"OUT", Align::Right, 0},
                 {"FRAMES", Align::Right, 0}});
    for (const auto& [clipName, segments] : list) {
        const std::string name = BytesFromText(clipName);
        if (segments.empty()) {
            table.AddRow({name, "", "", "0"});
        }
        for (const tag_P2SegInfo& segment : segments) {
            const std::int64_t frames = std::int64_t{segment.OutPoint} - segment.InPoint + 1;
            table.AddRow({name, fmt::format("{}", segment.InPoint),
                          fmt::format("{}", segment.OutPoint), fmt::format("{}", frames)});
        }
    }
    table.Print(console);
}

Status RunIngestList(Console& console, const IngestListOptions& options) {
    const Card card(options.card);
    card.RequireFolder();
    IngestList list;
    IngestResult result;
    if (!LoadIngestList(card.Root(), list, result)) {
        RequireDone(result);
    }
    const Sequence records = {list.size(),
                              [&list](std::size_t index) { return IngestRecord(list[index]); }};
    if (options.json) {
        PrintJson(console, {{"clips", records}});
    } else if (options.csv) {
        PrintCsv(console, IngestRecord({}), records);
    } else {
        PrintIngestTable(console, list);
    }
    return kDone;
}

} // namespace

void RequireDone(const IngestResult& result) {
    struct Words {
        IngestStatus status;
        const char* problem;
        const char* reason; ///< where the library gives none
    };
    static constexpr Words kWords[] = {
        {IngestStatus::NotListed, "the clip is not listed", "`nqp2 ingest list` shows the list"},
        {IngestStatus::NoList, "there is no ingest list", ""},
        {IngestStatus::Unreadable, "the ingest list cannot be read", ""},
        {IngestStatus::Foreign, "is no ingest list", ""},
        {IngestStatus::BadName, "the clip's name cannot be written", ""},
        {IngestStatus::Busy, "the ingest list was not changed", "another program keeps it locked"},
        {IngestStatus::NotSaved, "the ingest list was not changed",
         "the card may be write-protected or full"},
    };
    for (const Words& words : kWords) {
        if (words.status == result.status) {
            const std::string path = RealPath(result.path);
            throw Failure(
                result.line > 0 ? fmt::format("{}:{}:{}", path, result.line, result.column) : path,
                words.problem,
                result.reason.IsEmpty() ? words.reason : BytesFromText(result.reason));
        }
    }
}

void AddIngestListCommand(CLI::App& group, Action& chosen) {
    const auto options = std::make_shared<IngestListOptions>();
    CLI::App* command = group.add_subcommand("list", "List the clips and segments taken in");
    AddCardArgument(*command, options->card);
    auto* json = command->add_flag("--json", options->json, "Print JSON");
    command->add_flag("--csv", options->csv, "Print comma-separated values, a line for each clip")
        ->excludes(json);
    SetExample(*command, "nqp2 ingest list /media/card");
    command->callback([options, &chosen] {
        chosen = [options](Console& console) { return RunIngestList(console, *options); };
    });
}

} // namespace nqp2::tool
