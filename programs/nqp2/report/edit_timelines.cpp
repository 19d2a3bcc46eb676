// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/sections.h"
#include "nqp2/report/track.h"

#include "nqp2/clip_cells.h"
#include "nqp2/clip_table.h"
#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace nqp2::report {
namespace {

using Event = tag_P2EDLClipTrackEvent;

constexpr int kMostChannels = 4;

/// An event at its place, in milliseconds: clips of one playlist may have rates of their own.
struct Placed {
    const Event* event;
    const CString* rate;
    std::int64_t start;
    std::int64_t length;
};

std::int64_t Milliseconds(std::int64_t frames, const CString& rate) {
    const FrameRate* const known = FindFrameRate(rate);
    constexpr FrameRate kAnyOther = {};
    const double perSecond = (known != nullptr ? *known : kAnyOther).PerSecond();
    return std::llround(1000.0 * static_cast<double>(std::max<std::int64_t>(frames, 0)) /
                        perSecond);
}

/// The events as they are played. Those of a playlist follow each other, whatever their offset, and
/// count the frames of their clips.
std::vector<Placed> PlacedEvents(const EditContents& contents) {
    std::vector<Placed> placed;
    std::int64_t end = 0;
    for (const Event& event : contents.edit.Events) {
        const CString& rate = contents.isPlaylist ? event.Clip.FrameRate : contents.edit.FrameRate;
        const std::int64_t start = contents.isPlaylist ? end : Milliseconds(event.Offset, rate);
        end = start + Milliseconds(event.Duration, rate);
        placed.push_back({&event, &rate, start, end - start});
    }
    std::stable_sort(placed.begin(), placed.end(), [](const Placed& left, const Placed& right) {
        return left.start < right.start;
    });
    return placed;
}

std::int64_t EndOf(const std::vector<Placed>& events) {
    std::int64_t end = 0;
    for (const Placed& event : events) {
        end = std::max(end, event.start + event.length);
    }
    return end;
}

Block GapBlock(std::int64_t start, std::int64_t end) {
    const std::string length = fmt::format("{:.1f} s", static_cast<double>(end - start) / 1000);
    return {start, end - start, "piece gap", "gap", length, "gap of " + length, ""};
}

/// In upper case.
std::set<CString> NamesOfClips(const CardContents& card) {
    std::set<CString> names;
    for (const ClipContents& clip : card.clips) {
        names.insert(CString(clip.clip->ClipName).MakeUpper());
    }
    return names;
}

Block EventBlock(const Placed& placed, bool isHere) {
    const Event& event = *placed.event;
    const std::string name = BytesFromText(event.ClipName);
    const std::string length = tool::LengthText(event.Duration, *placed.rate);
    return {placed.start,
            placed.length,
            isHere ? Own("piece") : Own("piece missing"),
            name,
            isHere ? length : length + ", not on this card",
            fmt::format("{}, from its frame {}, {} frames", name, event.SourceIn, event.Duration),
            ""};
}

std::vector<Block> PictureBlocks(const std::vector<Placed>& events, const std::set<CString>& here) {
    std::vector<Block> blocks;
    std::int64_t end = 0;
    for (const Placed& placed : events) {
        if (placed.start > end) {
            blocks.push_back(GapBlock(end, placed.start));
        }
        const CString name = CString(placed.event->ClipName).MakeUpper();
        blocks.push_back(EventBlock(placed, here.count(name) != 0));
        end = std::max(end, placed.start + placed.length);
    }
    return blocks;
}

std::string LevelText(double level) {
    if (level == 1.0) {
        return "";
    }
    return level <= 0 ? ", silent" : fmt::format(", {:+.1f} dB", 20 * std::log10(level));
}

/// What is heard on an output channel.
std::vector<Block> SoundBlocks(const std::vector<Placed>& events, int output, bool isPlaylist) {
    std::vector<Block> blocks;
    for (const Placed& placed : events) {
        const Event& event = *placed.event;
        const std::int32_t source = event.Channels[output];
        if (source < 0 || (isPlaylist && output >= tool::AudioChannels(event.Clip))) {
            continue;
        }
        const std::string label =
            fmt::format("ch {}{}", std::int64_t{source} + 1, LevelText(event.AudioLevels[output]));
        blocks.push_back({placed.start, placed.length, "piece sound", label, "",
                          BytesFromText(event.ClipName) + ", " + label, ""});
    }
    return blocks;
}

void PutRow(Html& html, std::string_view name, std::int64_t length,
            const std::vector<Block>& blocks, Own kind) {
    html.Open("div").With("class", "row").ShownElement("span", "head", name);
    PutTrack(html, kind, length, blocks);
    html.Close("div");
}

void PutEdit(Html& html, const EditContents& contents, const std::set<CString>& here) {
    const tag_P2EDL& edit = contents.edit;
    const std::vector<Placed> events = PlacedEvents(contents);
    const std::int64_t length = EndOf(events);
    html.Open("article").With("class", "edit").Open("h4").Foreign(edit.Name);
    html.Open("small").Foreign(
        fmt::format("{} \xC2\xB7 {} \xC2\xB7 {} {}", Counted(edit.Events.GetSize(), "event"),
                    tool::LengthText(edit.Duration, edit.FrameRate), BytesFromText(edit.Codec),
                    BytesFromText(edit.FrameRate)));
    html.Close("small").Close("h4");
    PutRow(html, "V", length, PictureBlocks(events, here), "picture-track");
    for (int output = 0; output < kMostChannels; ++output) {
        const std::vector<Block> blocks = SoundBlocks(events, output, contents.isPlaylist);
        if (!blocks.empty()) {
            PutRow(html, fmt::format("A{}", output + 1), length, blocks, "sound-track");
        }
    }
    if (events.size() > kMostBlocks) {
        html.Element("p", "more", "The first of its events are drawn.");
    }
    html.Close("article");
}

} // namespace

void PutEdits(Html& html, const CardContents& card) {
    if (card.edits.empty()) {
        return;
    }
    html.Open("section").With("class", "edits").Open("h3");
    html.Text(card.edits.front().isPlaylist ? Own("Playlists") : Own("Edit lists")).Close("h3");
    const std::set<CString> here = NamesOfClips(card);
    for (const EditContents& edit : card.edits) {
        PutEdit(html, edit, here);
    }
    html.Close("section");
}

} // namespace nqp2::report
