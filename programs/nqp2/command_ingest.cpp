// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/table.h"
#include "console/value.h"
#include "nqp2/card_clip.h"
#include "nqp2/card_entry.h"
#include "nqp2/command.h"
#include "nqp2/input_text.h"
#include "nqp2/record_output.h"

#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::tool {
namespace {

/// Throws the failure to report unless the list was read or changed.
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

/// A folder of any kind can hold a list.
Card CardOfList(Console& console, const std::string& argument) {
    const Card card = EnterCard(console, argument, {kP2Cards, L"USERDATA"});
    card.RequireFolder();
    return card;
}

struct IngestListOptions {
    std::string card;
    OutputForm form;
};

using IngestClip = IngestList::value_type;

Record IngestRecord(const IngestClip& clip) {
    List segments;
    for (const tag_P2SegInfo& segment : clip.second) {
        segments.emplace_back(List{segment.InPoint, segment.OutPoint});
    }
    return {{"ClipName", BytesFromText(clip.first)}, {"segments", segments}};
}

void GiveIngestRows(const IngestClip& clip, const TakeRow& take) {
    const std::string name = BytesFromText(clip.first);
    if (clip.second.empty()) {
        take({name, "", "", "0"});
    }
    for (const tag_P2SegInfo& segment : clip.second) {
        const std::int64_t frames = std::int64_t{segment.OutPoint} - segment.InPoint + 1;
        take({name, fmt::format("{}", segment.InPoint), fmt::format("{}", segment.OutPoint),
              fmt::format("{}", frames)});
    }
}

void PrintIngestTable(Console& console, const IngestList& list) {
    const std::vector<Column> columns = {{"CLIP", Align::Left, 8},
                                         {"IN", Align::Right, 0},
                                         {"OUT", Align::Right, 0},
                                         {"FRAMES", Align::Right, 0}};
    PrintTable(console, columns, [&](const TakeRow& take) {
        for (const IngestClip& clip : list) {
            GiveIngestRows(clip, take);
        }
    });
}

Status RunIngestList(Console& console, const IngestListOptions& options) {
    const Card card = CardOfList(console, options.card);
    if (!card.HoldsFolder(L"USERDATA")) {
        card.RequireContents();
    }
    IngestList list;
    IngestResult result;
    if (!LoadIngestList(card.Root(), list, result)) {
        RequireDone(result);
    }
    const Sequence records = {list.size(), [&list](ValueSink& sink, std::size_t index) {
                                  Put(sink, IngestRecord(list[index]));
                              }};
    PrintListing(console, options.form,
                 {{{"clips", records}}, IngestRecord({}), records, [&list](Console& target) {
                      PrintIngestTable(target, list);
                  }});
    return kDone;
}

using Segments = std::vector<tag_P2SegInfo>;

struct IngestChange {
    std::string card;
    std::string clip;
    std::vector<std::string> segments;
    bool elsewhere = false;
};

std::int32_t FrameFrom(std::string_view text) {
    return WholeNumber<std::int32_t>(text).value_or(-1);
}

tag_P2SegInfo SegmentFrom(const std::string& text) {
    const std::size_t dash = text.find('-');
    const std::string_view view = text;
    tag_P2SegInfo segment = {-1, -1};
    if (dash != std::string::npos) {
        segment = {FrameFrom(view.substr(0, dash)), FrameFrom(view.substr(dash + 1))};
    }
    if (segment.InPoint < 0 || segment.OutPoint < segment.InPoint) {
        throw Failure(text, "is no segment", "expected IN-OUT, the first and last frame", kUsage);
    }
    return segment;
}

CString ClipNameFrom(const std::string& text) {
    const CString name = TextFromBytes(text);
    const std::wstring_view view = name.View();
    const bool plain = FitsXml(name) &&
                       std::none_of(view.begin(), view.end(), [](wchar_t ch) { return ch < L' '; });
    if (name.IsEmpty() || !plain) {
        throw Failure(text, "is no clip name", "", kUsage);
    }
    return name;
}

/// The clip as the card spells it. Folders that are no P2 cards have lists, too, and no clips to
/// look for.
CString NotedClip(const Card& card, const CString& name, bool elsewhere) {
    if (!card.HoldsFolder(L"CONTENTS")) {
        return name;
    }
    ReadyParser parser;
    const std::optional<CardClip> clip = FindCardClip(parser, card, name);
    if (!clip && !elsewhere && !HasFilesOfClip(card, name)) {
        ThrowNoCardClip(card, name, "", "--elsewhere notes it all the same");
    }
    return clip ? clip->name : name;
}

Status RunIngestAdd(Console& console, const IngestChange& change) {
    const CString clip = ClipNameFrom(change.clip);
    Segments segments;
    std::transform(change.segments.begin(), change.segments.end(), std::back_inserter(segments),
                   SegmentFrom);
    const Card card = CardOfList(console, change.card);
    const CString noted = NotedClip(card, clip, change.elsewhere);
    RequireDone(AddToIngestList(card.Root(), {{noted, segments}}));
    return kDone;
}

Status RunIngestRemove(Console& console, const IngestChange& change) {
    const CString clip = ClipNameFrom(change.clip);
    const Card card = CardOfList(console, change.card);
    RequireDone(RemoveFromIngestList(card.Root(), clip));
    return kDone;
}

void AddCardAndClip(const Command& command, IngestChange& change) {
    command.CardArgument(change.card);
    command.Argument("CLIP", change.clip, "The clip's name, in any letter case");
}

} // namespace

void AddIngestCommand(const Command& program) {
    const Command group =
        program.AddGroup("ingest", "Show and change what was taken in from a card");
    const Command list = group.Add("list", "List the clips and segments taken in");
    IngestListOptions& options = list.Runs(RunIngestList);
    list.CardArgument(options.card);
    list.JsonAndCsvFlags(options.form, "", ", a line for each clip");
    list.Example("nqp2 ingest list /media/card");

    const Command add = group.Add("add", "Note segments of a clip as taken in");
    IngestChange& addition = add.Runs(RunIngestAdd);
    AddCardAndClip(add, addition);
    add.Argument("IN-OUT", addition.segments, "First and last frame of a segment, counted from 0");
    add.Flag("--elsewhere", addition.elsewhere,
             "Also a clip that the card does not have, or no longer");
    add.Example("nqp2 ingest add /media/card 0001AB 0-249 300-424");

    const Command remove = group.Add("remove", "Take a clip out of the list");
    AddCardAndClip(remove, remove.Runs(RunIngestRemove));
    remove.Example("nqp2 ingest remove /media/card 0001AB");
    group.Example("nqp2 ingest list /media/card");
}

} // namespace nqp2::tool
