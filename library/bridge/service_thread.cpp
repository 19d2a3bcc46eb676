// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/service_thread.h"

#include "channel/shared_flag.h"

#include <list>

namespace nqp2::bridge {

namespace {

constexpr std::chrono::milliseconds kStopStep(40);

} // namespace

void ForgetThreadOfParent(std::thread thread) {
    // It can neither be joined nor detached, nor destroyed unless it was. Never destroyed, then.
    static auto& threads = *new std::list<std::thread>;
    threads.push_back(std::move(thread));
}

void ServiceThread::Stop(std::int32_t& stopFlag) {
    if (!m_thread.joinable()) {
        return;
    }
    if (!m_owner.IsThisProcess()) {
        ForgetThreadOfParent(std::move(m_thread));
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
