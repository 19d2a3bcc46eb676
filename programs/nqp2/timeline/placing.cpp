// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/placing.h"

#include <algorithm>
#include <utility>

namespace nqp2::timeline {
namespace {

/// Longer than any edit; products with rates and ticks stay within 64 bits.
constexpr std::int64_t kMostFrames = std::int64_t{1} << 34U;

/// Of a second: every frame of every rate that cameras have is a whole number of them.
constexpr std::int64_t kTicks = 120000;

std::int64_t TicksOf(std::int64_t frames, const FrameRate& rate) {
    return frames * (kTicks * rate.seconds / rate.frames);
}

std::int64_t FramesOf(std::int64_t ticks, const FrameRate& rate) {
    const std::int64_t each = kTicks * rate.seconds / rate.frames;
    return (ticks + each / 2) / each;
}

} // namespace

bool Placing::HasPlace(std::size_t number, const Event& event) {
    if (event.length <= 0) {
        m_remarks.AddEvent(number, "without length: left out");
        return false;
    }
    if (event.start < 0 || event.in < 0) {
        m_remarks.AddEvent(number, "before the beginning of the list or of its clip: left out");
        return false;
    }
    if (std::max(event.start, m_end) + event.length > kMostFrames) {
        m_remarks.AddEvent(number, "beyond any length that a timeline may have: left out");
        return false;
    }
    return true;
}

void Placing::PutAt(std::size_t number, Event event) {
    if (!HasPlace(number, event)) {
        return;
    }
    const std::int64_t covered = m_end - event.start;
    if (covered >= event.length) {
        m_remarks.AddEvent(number, "under the event before: left out");
        return;
    }
    if (covered > 0) {
        m_remarks.AddEvent(number, "over the event before: its beginning is cut off");
        event.start += covered;
        event.in += covered;
        event.length -= covered;
    }
    event.duration = event.length;
    m_end = event.End();
    m_events.push_back(std::move(event));
}

void Placing::PutNext(std::size_t number, Event event, const FrameRate& timelineRate) {
    event.start = m_end;
    if (!HasPlace(number, event)) {
        return;
    }
    m_ticks += TicksOf(event.length, event.rate);
    event.duration = std::max<std::int64_t>(FramesOf(m_ticks, timelineRate) - event.start, 1);
    m_end = event.End();
    m_events.push_back(std::move(event));
}

} // namespace nqp2::timeline
