// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/bell.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace nqp2::copy {

/// Does tasks one after another in a thread of its own, or where there is none in the caller's.
class Lane {
public:
    using Task = std::function<void()>;

    /// `bell`: rings after each task; outlives it.
    explicit Lane(Bell& bell);
    /// Waits for the task that has begun and drops the others.
    ~Lane();
    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;

    /// Whether so few tasks wait that another one may.
    [[nodiscard]] bool HasRoom();
    [[nodiscard]] bool IsIdle();
    /// Nothing is done any more after a task that throws.
    void Post(Task task);
    /// Throws what a task has thrown.
    void Rethrow();

private:
    void Run();
    void Do(const Task& task);

    Bell& m_bell;
    std::mutex m_lock;
    std::condition_variable m_posted;
    std::deque<Task> m_tasks; ///< the first is being done
    std::exception_ptr m_trouble;
    bool m_isOver = false;
    std::thread m_thread; ///< last: it uses all others
};

} // namespace nqp2::copy
