// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/work_ahead.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace nqp2::tool {
namespace {

/// For fewer things a thread is not worth its start.
constexpr std::size_t kLeastThings = 32;

/// What may be held of things that were made before their turn. The last of each worker may go
/// beyond it.
constexpr std::size_t kMostHeld = std::size_t{4} << 20U;

} // namespace

WorkAhead::WorkAhead(std::size_t count, Steps steps) : m_count(count), m_steps(std::move(steps)) {}

void WorkAhead::Start() {
    const std::size_t workers =
        m_count < kLeastThings
            ? 1
            : std::min<std::size_t>(std::thread::hardware_concurrency(), kMostWorkers);
    try {
        m_threads.reserve(kMostWorkers);
        while (m_threads.size() + 1 < workers) {
            m_threads.emplace_back([this, worker = m_threads.size() + 1] { Work(worker); });
        }
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): those there are will do
    } catch (const std::bad_alloc&) {    // NOLINT(bugprone-empty-catch)
    }
}

bool WorkAhead::Reach(std::size_t index) {
    Lock lock(m_mutex);
    if (index > 0) {
        Release();
    }
    if (m_begun == index) {
        BeginNext();
        return false;
    }
    while (!Of(index).isReady) {
        if (HasRoom()) {
            MakeNext(lock, 0);
        } else {
            m_isAwaited = true;
            m_isReady.wait(lock, [&] { return Of(index).isReady; });
            m_isAwaited = false;
        }
    }
    return true;
}

/// The thing that was shown before the next one.
void WorkAhead::Release() {
    Made& made = Of(m_shown++);
    m_bytes -= made.bytes;
    made = {};
    // Waking takes as long as making one of them.
    if (m_begun - m_shown <= kWindow / 2) {
        m_hasRoom.notify_all();
    }
}

bool WorkAhead::HasRoom() const {
    return m_begun < m_count && m_begun - m_shown < kWindow && m_bytes <= kMostHeld;
}

std::size_t WorkAhead::BeginNext() {
    if (m_steps.begin) {
        m_steps.begin(m_begun);
    }
    return m_begun++;
}

void WorkAhead::MakeNext(Lock& lock, std::size_t worker) {
    const std::size_t index = BeginNext();
    lock.unlock();
    const std::size_t bytes = m_steps.make(worker, index);
    lock.lock();
    Of(index) = {true, bytes};
    m_bytes += bytes;
}

void WorkAhead::Work(std::size_t worker) {
    Lock lock(m_mutex);
    while (!m_isOver && m_begun < m_count) {
        if (!HasRoom()) {
            m_hasRoom.wait(lock);
            continue;
        }
        MakeNext(lock, worker);
        if (m_isAwaited) {
            m_isReady.notify_one();
        }
    }
}

void WorkAhead::End() {
    {
        const Lock lock(m_mutex);
        m_isOver = true;
    }
    m_hasRoom.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

} // namespace nqp2::tool
