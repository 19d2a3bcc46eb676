// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/event_times.h"

#include "nqp2/json_input.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace nqp2::tool {
namespace {

constexpr std::int32_t kUntold = -1; ///< SourceIn and SourceOut of a fresh record
constexpr std::int64_t kMostFrames = std::numeric_limits<std::int32_t>::max();

/// A stretch of the source.
struct Stretch {
    std::int64_t first;
    std::int64_t last;
    std::int64_t length;
};

[[noreturn]] void RefuseTimes(const InputValue& input, std::string_view reason) {
    input.Refuse("contradicts itself", reason);
}

void TakeFirst(const InputValue& input, tag_P2EDLClipTrackEvent& event) {
    if (event.SourceIn == kUntold) {
        return;
    }
    if (input.Has("SourceOffset") && event.SourceOffset != event.SourceIn) {
        RefuseTimes(input, fmt::format("SourceOffset is {}, SourceIn {}: both are the first frame",
                                       event.SourceOffset, event.SourceIn));
    }
    event.SourceOffset = event.SourceIn;
}

Stretch StretchOf(const InputValue& input, const tag_P2EDLClipTrackEvent& event) {
    Stretch stretch = {event.SourceOffset, event.SourceOut, event.Duration};
    const bool tellsFirst = input.Has("SourceOffset") || event.SourceIn != kUntold;
    // Lists of other kinds of cards, which carry clips, tell the frame behind the last.
    if (event.SourceOut == kUntold || input.Has("Clip")) {
        // As readers do with a sum that leaves 32 bits.
        stretch.last = std::min(stretch.first + stretch.length - 1, kMostFrames);
    } else if (!input.Has("Duration")) {
        stretch.length = stretch.last - stretch.first + 1;
    } else if (!tellsFirst) {
        stretch.first = stretch.last - stretch.length + 1;
    }
    return stretch;
}

void RequireSound(const InputValue& input, const Stretch& stretch) {
    const std::int64_t last = std::min(stretch.first + stretch.length - 1, kMostFrames);
    if (stretch.length < 0 || stretch.length > kMostFrames || stretch.last != last) {
        RefuseTimes(input,
                    fmt::format("frames {} to {} are {}, not {}", stretch.first, stretch.last,
                                stretch.last - stretch.first + 1, stretch.length));
    }
    if (stretch.first < 0) {
        RefuseTimes(input, fmt::format("{} frames up to {} begin before the clip", stretch.length,
                                       stretch.last));
    }
}

std::int32_t FramesOf(const InputValue& input, std::int64_t frames) {
    if (frames < 0 || frames > kMostFrames) {
        input.Refuse("ends too late", "positions are whole numbers of 32 bits");
    }
    return static_cast<std::int32_t>(frames);
}

std::int64_t EndOf(const tag_P2EDLClipTrackEvent& event) {
    return std::int64_t{event.Offset} + event.Duration;
}

} // namespace

void CompleteTimes(const InputValue& input, tag_P2EDLClipTrackEvent& event) {
    TakeFirst(input, event);
    const Stretch stretch = StretchOf(input, event);
    RequireSound(input, stretch);
    event.SourceOffset = static_cast<std::int32_t>(stretch.first);
    event.SourceIn = event.SourceOffset;
    event.SourceOut = static_cast<std::int32_t>(stretch.last);
    event.Duration = static_cast<std::int32_t>(stretch.length);
}

void PlaceBehind(const tag_P2EDL& edl, const InputValue& input, tag_P2EDLClipTrackEvent& event) {
    if (!input.Has("Offset") && !edl.Events.IsEmpty()) {
        event.Offset = FramesOf(input, EndOf(edl.Events[edl.Events.GetSize() - 1]));
    }
}

void CompleteLength(const InputValue& input, tag_P2EDL& edl) {
    if (input.Has("Duration")) {
        return;
    }
    std::int64_t end = 0;
    for (const tag_P2EDLClipTrackEvent& event : edl.Events) {
        end = std::max(end, EndOf(event));
    }
    edl.Duration = FramesOf(input, end);
}

} // namespace nqp2::tool
