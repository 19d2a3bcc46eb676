// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/copier.h"
#include "worker/channel_line.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

namespace nqp2::worker {

/// Progress on a session's callback channel: one thread sends, another hears the answers.
/// At most one report of a transfer waits for its answer, so that a slow host never slows a copy.
class ProgressLink {
public:
    /// Answers the host's registration. Reports go out on that channel from then on, and an import
    /// that follows the answer finds it so. The channel outlives them: see Detach.
    void Attach(ChannelLine& line);
    /// The host is gone: nothing goes out any more, nothing is waited for, and transfers end.
    void Detach();
    /// The host has answered the oldest report: the answer is for the transfer that sent it.
    void Answered(bool abort);

    /// Another transfer, which no earlier wish to abort is meant for.
    void Begin();
    /// Sends the state unless one of this transfer is still unanswered or has just been sent. False
    /// once the host wants to abort it.
    [[nodiscard]] bool Report(std::uint64_t done, std::uint64_t total);
    /// Sends the last state and waits for what the host says to it.
    [[nodiscard]] bool ReportEnd(std::uint64_t total);
    /// Waits a little for the host's callback, which is to hear nothing of a transfer that is over.
    void Drain();
    /// Ends every transfer of the session, now and later.
    void Stop();
    /// Whether the session lasts: false once it was stopped or its host has gone.
    [[nodiscard]] bool Lasts();

private:
    using Clock = std::chrono::steady_clock;

    void Send(std::uint64_t done, std::uint64_t total, std::unique_lock<std::mutex>& lock);
    /// Of this transfer; those of earlier ones stand before them.
    [[nodiscard]] bool IsAnswered() const;
    [[nodiscard]] bool MayGoOn() const { return !m_abort && !m_stopped; }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    ChannelLine* m_line = nullptr;
    std::deque<std::uint64_t> m_unanswered; ///< the transfers of the reports, oldest first
    std::uint64_t m_transfer = 0;
    Clock::time_point m_due; ///< when the next report may go out
    bool m_sending = false;
    bool m_abort = false;
    bool m_stopped = false;
};

/// What one transfer reports; remembers the last state.
class TransferProgress final : public copy::Watch {
public:
    explicit TransferProgress(ProgressLink& link) : m_link(link) { m_link.Begin(); }
    TransferProgress(const TransferProgress&) = delete;
    TransferProgress& operator=(const TransferProgress&) = delete;
    ~TransferProgress() override { m_link.Drain(); }

    bool GoesOn(std::uint64_t done, std::uint64_t total) override {
        m_done = done;
        m_total = total;
        return m_link.Report(done, total);
    }
    bool MayFinish(std::uint64_t total) override {
        m_done = m_total = total;
        return m_link.ReportEnd(total);
    }
    [[nodiscard]] std::uint64_t Done() const { return m_done; }
    [[nodiscard]] std::uint64_t Total() const { return m_total; }

private:
    ProgressLink& m_link;
    std::uint64_t m_done = 0;
    std::uint64_t m_total = 0;
};

/// Bytes as the messages count them, in KiB, rounded up.
std::uint32_t KibiBytes(std::uint64_t bytes);

} // namespace nqp2::worker
