// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/card.h"
#include "nqp2/foreign_text.h"
#include "nqp2/ingest_commands.h"
#include "nqp2/whole_number.h"

#include "NQP2ParserU/IngestList.h"
#include "NQP2ParserU/TextBytes.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::tool {
namespace {

using Segments = std::vector<tag_P2SegInfo>;

struct IngestChange {
    std::string card;
    std::string clip;
    std::vector<std::string> segments;
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

Status RunIngestAdd(const IngestChange& change) {
    const CString clip = ClipNameFrom(change.clip);
    Segments segments;
    std::transform(change.segments.begin(), change.segments.end(), std::back_inserter(segments),
                   SegmentFrom);
    const Card card(change.card);
    card.RequireFolder();
    RequireDone(AddToIngestList(card.Root(), {{clip, segments}}));
    return kDone;
}

Status RunIngestRemove(const IngestChange& change) {
    const CString clip = ClipNameFrom(change.clip);
    const Card card(change.card);
    card.RequireFolder();
    RequireDone(RemoveFromIngestList(card.Root(), clip));
    return kDone;
}

void AddClipArgument(CLI::App& command, std::string& clip) {
    command.add_option("CLIP", clip, "The clip's name, in any letter case")
        ->type_name("")
        ->required();
}

} // namespace

void AddIngestAddCommand(CLI::App& group, Action& chosen) {
    const auto change = std::make_shared<IngestChange>();
    CLI::App* command = group.add_subcommand("add", "Note segments of a clip as taken in");
    AddCardArgument(*command, change->card);
    AddClipArgument(*command, change->clip);
    command
        ->add_option("IN-OUT", change->segments,
                     "First and last frame of a segment, counted from 0")
        ->type_name("")
        ->required();
    SetExample(*command, "nqp2 ingest add /media/card 0001AB 0-249 300-424");
    command->callback(
        [change, &chosen] { chosen = [change](Console&) { return RunIngestAdd(*change); }; });
}

void AddIngestRemoveCommand(CLI::App& group, Action& chosen) {
    const auto change = std::make_shared<IngestChange>();
    CLI::App* command = group.add_subcommand("remove", "Take a clip out of the list");
    AddCardArgument(*command, change->card);
    AddClipArgument(*command, change->clip);
    SetExample(*command, "nqp2 ingest remove /media/card 0001AB");
    command->callback(
        [change, &chosen] { chosen = [change](Console&) { return RunIngestRemove(*change); }; });
}

} // namespace nqp2::tool
