// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tools/nqp2/card.h"
#include "tools/nqp2/ingest_commands.h"
#include "tools/nqp2/whole_number.h"

#include "ingest/IngestList.h"
#include "platform/TextBytes.h"

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
    if (view.empty() ||
        std::any_of(view.begin(), view.end(), [](wchar_t ch) { return ch < L' '; })) {
        throw Failure(text, "is no clip name", "", kUsage);
    }
    return name;
}

/// Segments of the clip's first entry.
Segments Listed(const IngestList& list, const CString& clip) {
    const auto found = std::find_if(list.begin(), list.end(), [&](const auto& entry) {
        return entry.first.CompareNoCase(clip) == 0;
    });
    return found == list.end() ? Segments{} : found->second;
}

/// Whether `now` is `before` with `added` at its end.
bool Follow(const Segments& before, const Segments& added, const Segments& now) {
    Segments wanted = before;
    wanted.insert(wanted.end(), added.begin(), added.end());
    return std::equal(wanted.begin(), wanted.end(), now.begin(), now.end(),
                      [](const tag_P2SegInfo& left, const tag_P2SegInfo& right) {
                          return left.InPoint == right.InPoint && left.OutPoint == right.OutPoint;
                      });
}

Status RunIngestAdd(const IngestChange& change) {
    const CString clip = ClipNameFrom(change.clip);
    Segments segments;
    std::transform(change.segments.begin(), change.segments.end(), std::back_inserter(segments),
                   SegmentFrom);
    const Card card(change.card);
    // The library would replace a list that cannot be read.
    const IngestList before = LoadListOf(card);
    ReadyParser parser;
    IngestRequest request;
    request[card.Root()][clip] = segments;
    const bool failed = parser->WriteIngestXML(L"Ingest.xml", request) != 0;
    // The library does not tell whether the list could be saved: the list itself does.
    IngestList now;
    if (failed || !LoadIngestList(card.Root(), now) ||
        !Follow(Listed(before, clip), segments, Listed(now, clip))) {
        throw Failure(card.Folder(), "the ingest list was not written",
                      "the card may be write-protected or full");
    }
    return kDone;
}

struct RemovalWords {
    IngestRemoval result;
    const char* problem;
    const char* reason;
};
constexpr RemovalWords kRemovals[] = {
    {IngestRemoval::NotListed, "the clip is not listed", "`nqp2 ingest list` shows the list"},
    {IngestRemoval::NoList, "there is no ingest list that can be read", ""},
    {IngestRemoval::NotSaved, "the ingest list was not written",
     "the card may be write-protected or full"},
};

Status RunIngestRemove(const IngestChange& change) {
    const CString clip = ClipNameFrom(change.clip);
    const Card card(change.card);
    card.RequireFolder();
    const IngestRemoval result = RemoveFromIngestList(card.Root(), clip);
    for (const RemovalWords& words : kRemovals) {
        if (words.result == result) {
            throw Failure(card.Folder(), words.problem, words.reason);
        }
    }
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
