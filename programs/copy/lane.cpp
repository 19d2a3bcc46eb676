// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/lane.h"

#include <new>
#include <system_error>
#include <utility>

namespace nqp2::copy {
namespace {

constexpr std::size_t kMostTasks = 1024;

} // namespace

Lane::Lane(Bell& bell) : m_bell(bell) {
    try {
        m_thread = std::thread([this] { Run(); });
    } catch (const std::system_error&) { // NOLINT(bugprone-empty-catch): the caller's will do
    } catch (const std::bad_alloc&) {    // NOLINT(bugprone-empty-catch)
    }
}

Lane::~Lane() {
    {
        const std::lock_guard guard(m_lock);
        m_isOver = true;
    }
    m_posted.notify_one();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

bool Lane::HasRoom() {
    const std::lock_guard guard(m_lock);
    return m_tasks.size() < kMostTasks;
}

bool Lane::IsIdle() {
    const std::lock_guard guard(m_lock);
    return m_tasks.empty();
}

void Lane::Post(Task task) {
    if (!m_thread.joinable()) {
        const bool goesOn = [this] {
            const std::lock_guard guard(m_lock);
            return m_trouble == nullptr;
        }();
        if (goesOn) {
            Do(task);
        }
        return;
    }
    {
        const std::lock_guard guard(m_lock);
        m_tasks.push_back(std::move(task));
    }
    m_posted.notify_one();
}

void Lane::Rethrow() {
    const std::lock_guard guard(m_lock);
    if (m_trouble) {
        std::rethrow_exception(m_trouble);
    }
}

void Lane::Do(const Task& task) {
    try {
        task();
    } catch (...) {
        const std::lock_guard guard(m_lock);
        m_trouble = std::current_exception();
    }
}

void Lane::Run() {
    std::unique_lock lock(m_lock);
    for (;;) {
        m_posted.wait(lock, [this] { return m_isOver || !m_tasks.empty(); });
        if (m_isOver) {
            return;
        }
        Task task = std::move(m_tasks.front());
        const bool goesOn = m_trouble == nullptr;
        lock.unlock();
        if (goesOn) {
            Do(task);
        }
        task = nullptr; // with the blocks that it holds
        lock.lock();
        m_tasks.pop_front();
        lock.unlock();
        m_bell.Ring();
        lock.lock();
    }
}

} // namespace nqp2::copy
