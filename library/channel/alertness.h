// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <chrono>

namespace nqp2::channel {

/// Whether a thread that waits for the peer watches for a moment before it falls asleep. Falling
/// asleep and waking up cost more than a short answer takes; but where the peer must run on this
/// very processor, watching only delays it. Processors are not counted: those that both processes
/// may use, and those that others leave to them, can change at any time. What counts is whether
/// watching has paid of late.
class Alertness {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::time_point kNotAtAll{};

    /// The peer has been given something to do.
    void Begin() {
        const bool isWorthWhile = m_credit > 0 || ++m_passedOver % kTryAgain == 0;
        m_until = isWorthWhile ? Clock::now() + kMoment : kNotAtAll;
    }
    /// Until when to watch.
    [[nodiscard]] Clock::time_point Until() const { return m_until; }
    /// After a wait that began with watching until then: whether anything came meanwhile. What came
    /// soon after the thread fell asleep had been kept from coming; what came much later proves
    /// nothing.
    void Learn(Clock::time_point until, bool hasPaid) {
        if (hasPaid) {
            m_credit = std::min(m_credit + 1, kMostCredit);
        } else if (Clock::now() < until + kMoment) {
            m_credit = std::max(m_credit - kLoss, 0);
        }
    }

private:
    /// What a short answer takes, or reading a video frame.
    static constexpr std::chrono::microseconds kMoment{100};
    static constexpr int kMostCredit = 8;
    static constexpr int kLoss = 2;
    static constexpr unsigned kTryAgain = 1024; ///< without credit, one in so many is watched for

    Clock::time_point m_until = kNotAtAll;
    int m_credit = kLoss;
    unsigned m_passedOver = 0;
};

} // namespace nqp2::channel
