// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/channel_line.h"
#include "worker/transfer_watch.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace nqp2::worker {

/// Progress on a session's callback channel: one thread sends, another hears the answers.
/// At most one report waits for its answer, so that a slow host never slows a copy.
class ProgressLink {
public:
    /// From now on reports go out on this channel, which outlives them: see Detach.
    void Attach(ChannelLine& line);
    /// The host is gone: nothing goes out any more, nothing is waited for, and transfers end.
    void Detach();
    /// The host has answered.
    void Answered(bool abort);

    /// Forgets an earlier wish to abort.
    void Begin();
    /// Sends the state unless a report is still unanswered. False once the host wants to abort.
    [[nodiscard]] bool Report(std::uint64_t done, std::uint64_t total);
    /// Sends the last state and waits for what the host says to it.
    [[nodiscard]] bool ReportEnd(std::uint64_t total);
    /// Waits a little for an answer that is under way, so that it is not taken for a later one's.
    void Drain();
    /// Ends every transfer of the session, now and later.
    void Stop();
    /// Whether the session lasts: false once it was stopped or its host has gone.
    [[nodiscard]] bool Lasts();

private:
    void Send(std::uint64_t done, std::uint64_t total, std::unique_lock<std::mutex>& lock);
    [[nodiscard]] bool MayGoOn() const { return !m_abort && !m_stopped; }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    ChannelLine* m_line = nullptr;
    bool m_unanswered = false;
    bool m_sending = false;
    bool m_abort = false;
    bool m_stopped = false;
};

/// What one transfer reports; remembers the last state.
class TransferProgress final : public TransferWatch {
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
