// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/model.h"
#include "nqp2/timeline/remarks.h"

#include <cstddef>
#include <cstdint>

namespace nqp2::timeline {

/// Puts events onto a timeline, none over another; what cannot be placed is left out with a remark.
class Placing {
public:
    explicit Placing(Remarks& remarks) : m_remarks(remarks) {}

    /// An event of the timeline's own rate, its `start` set. Where it begins over the one before,
    /// its beginning is cut off. `number` is its own from 1.
    void PutAt(std::size_t number, Event event);
    /// An event of whatever rate behind all others. Events end at the frame nearest to their true
    /// end, however many came before.
    void PutNext(std::size_t number, Event event, const FrameRate& timelineRate);

    std::vector<Event> Finish() { return std::move(m_events); }

private:
    [[nodiscard]] bool HasPlace(std::size_t number, const Event& event);

    Remarks& m_remarks;
    std::vector<Event> m_events;
    std::int64_t m_end = 0;   ///< frame of the timeline
    std::int64_t m_ticks = 0; ///< of that in PutNext
};

} // namespace nqp2::timeline
