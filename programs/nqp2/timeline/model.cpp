// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/model.h"

#include "nqp2/timeline/plain_text.h"
#include "NQP2ParserU/ClipTimes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace nqp2::timeline {
namespace {

/// The first line of a text, or its beginning.
std::string Shortened(std::string_view text) {
    constexpr std::size_t kMostBytes = 60;
    return CutText(text.substr(0, text.find_first_of("\r\n")), kMostBytes);
}

constexpr std::string_view kUnnamed = "Mark";

const TimelineHead& HeadOf(const Timeline& timeline) {
    return timeline;
}

/// The start of a timeline at another rate: the frame of the same timecode where there is one.
std::int64_t SameTimecode(const Timeline& timeline, const FrameRate& rate, bool dropFrame) {
    const CString text = FrameTimecode(timeline.start, timeline.rate, timeline.dropFrame);
    const std::int64_t frame = TimecodeFrame(text, rate, dropFrame);
    return frame >= 0 ? frame : Rescaled(timeline.start, timeline.rate, rate);
}

Event Retold(const Event& event, const FrameRate& from, const FrameRate& to, std::int64_t soonest) {
    Event retold = event;
    retold.rate = to;
    retold.in = Rescaled(event.in, event.rate, to);
    retold.length = std::max<std::int64_t>(Rescaled(event.length, event.rate, to), 1);
    retold.start = std::max(Rescaled(event.start, from, to), soonest);
    retold.duration = retold.length;
    return retold;
}

} // namespace

std::size_t Timeline::SoundTracks() const {
    std::size_t tracks = 0;
    for (const Event& event : events) {
        const auto last = std::find_if(event.sound.rbegin(), event.sound.rend(),
                                       [](const SoundUse& use) { return use.IsHeard(); });
        tracks = std::max(tracks, static_cast<std::size_t>(event.sound.rend() - last));
    }
    return tracks;
}

std::vector<PlacedMemo> MemosOf(const TimelineHead& timeline, const Event& event) {
    const Media& media = timeline.MediaOf(event);
    std::vector<PlacedMemo> placed;
    const auto first =
        std::partition_point(media.memos.begin(), media.memos.end(), [&](const Memo& memo) {
            return Rescaled(memo.frame, media.rate, event.rate) < event.in;
        });
    for (auto memo = first; memo != media.memos.end(); ++memo) {
        const std::int64_t inSource = Rescaled(memo->frame, media.rate, event.rate);
        if (inSource >= event.in + event.length) {
            break;
        }
        const std::int64_t after = Rescaled(inSource - event.in, event.rate, timeline.rate);
        placed.push_back({&*memo, inSource, event.start + std::min(after, event.duration - 1)});
    }
    return placed;
}

std::string PartText(const Media& media) {
    return media.take ? fmt::format("Part {} of {} of one recording", media.take->number,
                                    media.take->count)
                      : "";
}

std::string MemoTitle(const Memo& memo) {
    return Shortened(memo.text.empty() ? MemoText(memo) : memo.text);
}

std::string MemoText(const Memo& memo) {
    if (memo.person.empty() && memo.text.empty()) {
        return std::string(kUnnamed);
    }
    return memo.person.empty() || memo.text.empty() ? memo.person + memo.text
                                                    : memo.person + ": " + memo.text;
}

bool IsSame(const FrameRate& left, const FrameRate& right) {
    return left.frames == right.frames && left.seconds == right.seconds;
}

std::int64_t Rescaled(std::int64_t frames, const FrameRate& from, const FrameRate& to) {
    if (IsSame(from, to)) {
        return frames;
    }
    // Rates of cameras: the products of both sides stay below 2^26, those of frames below 2^62.
    const std::int64_t per = std::int64_t{from.frames} * to.seconds;
    const std::int64_t scaled = frames * (std::int64_t{to.frames} * from.seconds);
    const std::int64_t half = scaled < 0 ? -per / 2 : per / 2;
    return (scaled + half) / per;
}

const FrameRate* CameraRate(std::int64_t frames, std::int64_t seconds) {
    const auto* const found =
        std::find_if(kFrameRates.begin(), kFrameRates.end(), [&](const FrameRate& rate) {
            return rate.frames * seconds == rate.seconds * frames;
        });
    return found == kFrameRates.end() ? nullptr : &*found;
}

std::vector<Timeline> SplitByRate(const Timeline& timeline) {
    std::vector<Timeline> parts;
    for (const Event& event : timeline.events) {
        const FrameRate& rate = timeline.MediaOf(event).rate;
        auto part = std::find_if(parts.begin(), parts.end(),
                                 [&](const Timeline& known) { return IsSame(known.rate, rate); });
        if (part == parts.end()) {
            Timeline fresh{HeadOf(timeline), {}};
            fresh.rate = rate;
            fresh.dropFrame = timeline.dropFrame && rate.droppedNumbers != 0;
            fresh.start = SameTimecode(timeline, rate, fresh.dropFrame);
            fresh.raster = timeline.MediaOf(event).raster;
            part = parts.insert(parts.end(), std::move(fresh));
        }
        Event retold = Retold(event, timeline.rate, rate, part->Length());
        if (timeline.isBin) { // its clips have no places of their own
            retold.start = part->Length();
        }
        part->events.push_back(std::move(retold));
    }
    return parts.empty() ? std::vector{timeline} : parts;
}

std::vector<Timeline> SplitByCount(Timeline timeline, std::size_t most) {
    std::vector<Event> events = std::move(timeline.events);
    std::vector<Timeline> parts;
    for (std::size_t first = 0; first == 0 || first < events.size(); first += most) {
        parts.push_back({HeadOf(timeline), {}});
        const auto from = std::next(events.begin(), static_cast<std::ptrdiff_t>(first));
        const auto count = static_cast<std::ptrdiff_t>(std::min(most, events.size() - first));
        parts.back().events.assign(std::make_move_iterator(from),
                                   std::make_move_iterator(std::next(from, count)));
    }
    return parts;
}

} // namespace nqp2::timeline
