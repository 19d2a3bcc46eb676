// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/progress_link.h"

#include "bridge/messages.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace nqp2::worker {

void ProgressLink::Attach(ChannelLine& line) {
    bridge::ResultMessage registered;
    registered.result = bridge::kDone;
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return !m_sending; });
    // Reports wait until the answer is sent: the host takes the next message for it.
    m_line = &line;
    m_sending = true;
    lock.unlock();
    const bool sent = line.SendMessage(Number(bridge::MessageId::RegisterProgress), registered);
    lock.lock();
    m_sending = false;
    m_line = sent ? m_line : nullptr;
    m_changed.notify_all();
}

void ProgressLink::Detach() {
    std::unique_lock lock(m_mutex);
    m_line = nullptr;
    m_unanswered.clear();
    m_stopped = true;
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return !m_sending; });
}

void ProgressLink::Answered(bool abort) {
    const std::lock_guard lock(m_mutex);
    if (m_unanswered.empty()) {
        return; // to nothing
    }
    m_abort = m_abort || (abort && m_unanswered.front() == m_transfer);
    m_unanswered.pop_front();
    m_changed.notify_all();
}

void ProgressLink::Begin() {
    const std::lock_guard lock(m_mutex);
    m_abort = false;
    m_due = {};
    ++m_transfer;
}

bool ProgressLink::IsAnswered() const {
    return m_unanswered.empty() || m_unanswered.back() != m_transfer;
}

/// The lock is open while the channel is used: its waits must not hold up the answer.
void ProgressLink::Send(std::uint64_t done, std::uint64_t total,
                        std::unique_lock<std::mutex>& lock) {
    bridge::ProgressMessage message;
    message.position = KibiBytes(done);
    message.total = KibiBytes(total);
    ChannelLine& line = *m_line;
    m_unanswered.push_back(m_transfer);
    m_sending = true;
    lock.unlock();
    const bool sent = line.SendMessage(Number(bridge::MessageId::Progress), message);
    lock.lock();
    m_sending = false;
    if (!sent && !m_unanswered.empty()) { // nothing is sent on a channel that failed once
        m_unanswered.pop_back();
    }
    m_changed.notify_all();
}

bool ProgressLink::Report(std::uint64_t done, std::uint64_t total) {
    // A host that is busy with an earlier transfer still has room for the first report of this one.
    constexpr std::size_t kMostUnanswered = 3;
    // Both processes wake for each report: for one of each block they would work much longer.
    constexpr std::chrono::milliseconds kPause(10);
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return !m_sending || m_stopped; });
    if (m_line != nullptr && IsAnswered() && m_unanswered.size() < kMostUnanswered && MayGoOn() &&
        Clock::now() >= m_due) {
        m_due = Clock::now() + kPause;
        Send(done, total, lock);
    }
    return MayGoOn();
}

bool ProgressLink::ReportEnd(std::uint64_t total) {
    std::unique_lock lock(m_mutex);
    const auto isFree = [&] { return (m_unanswered.empty() && !m_sending) || m_stopped; };
    m_changed.wait(lock, isFree);
    if (m_line != nullptr && MayGoOn()) {
        Send(total, total, lock);
        m_changed.wait(lock, isFree);
    }
    return MayGoOn();
}

void ProgressLink::Drain() {
    constexpr std::chrono::seconds kDrainPatience{2};
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, kDrainPatience, [&] { return IsAnswered() || m_stopped; });
}

void ProgressLink::Stop() {
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
}

bool ProgressLink::Lasts() {
    const std::lock_guard lock(m_mutex);
    return !m_stopped;
}

std::uint32_t KibiBytes(std::uint64_t bytes) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(bytes / 1024 + (bytes % 1024 != 0 ? 1 : 0), kMost));
}

} // namespace nqp2::worker
