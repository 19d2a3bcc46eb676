// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/service_thread.h"

#include "channel/shared_flag.h"

namespace nqp2::bridge {

namespace {

constexpr std::chrono::milliseconds kStopStep(40);

} // namespace

void ServiceThread::Stop(std::int32_t& stopFlag) {
    if (!m_thread.joinable()) {
        return;
    }
    if (!m_owner.IsThisProcess()) {
        m_thread.detach();
        return;
    }
    do {
        channel::SetFlag(stopFlag, 1);
    } while (!WaitForEnd(kStopStep));
    m_thread.join();
}

bool ServiceThread::HasEnded() {
    const std::lock_guard guard(m_lock);
    return m_hasEnded;
}

void ServiceThread::MarkEnded() {
    const std::lock_guard guard(m_lock);
    m_hasEnded = true;
    m_end.notify_all();
}

bool ServiceThread::WaitForEnd(std::chrono::milliseconds limit) {
    std::unique_lock guard(m_lock);
    return m_end.wait_for(guard, limit, [this] { return m_hasEnded; });
}

} // namespace nqp2::bridge
