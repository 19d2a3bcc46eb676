// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/read_ahead.h"

#include "platform/file_system.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace nqp2::platform {
namespace {

using Clock = std::chrono::steady_clock;

// A file in the system's cache takes a few microseconds, one on a card reader or a network mount
// about a millisecond; a thread costs some tens of microseconds to start.
constexpr auto kSlowRead = std::chrono::microseconds(150);
constexpr int kSlowReadsInRow = 4;

constexpr std::size_t kThreads = 4;
// Files held at a time: enough to keep the threads busy, few enough that large files cannot take
// more than 4 MiB with the scan's limit of 256 KiB a file.
constexpr std::size_t kWindow = 16;

IoStatus ReadFile(const std::string& path, std::uint64_t limit, std::string& content) {
    try {
        return Files().Read(path, limit, content);
    } catch (const std::exception& error) {
        return {IoError::Other, error.what()};
    }
}

} // namespace

/// The threads and the window of files that they fill, slot by slot in turn.
class ReadAhead::Crew {
public:
    Crew(const std::vector<std::string>& paths, std::uint64_t limit, std::size_t first)
        : m_paths(paths), m_limit(limit), m_claimed(first), m_taken(first) {
        for (std::thread& thread : m_threads) {
            thread = std::thread([this] { Work(); });
        }
    }

    ~Crew() {
        {
            const std::lock_guard lock(m_mutex);
            m_stop = true;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    IoStatus Take(std::string& content) {
        std::unique_lock lock(m_mutex);
        Slot& slot = m_slots[m_taken % kWindow];
        m_changed.wait(lock, [&] { return slot.filled; });
        slot.filled = false;
        content.swap(slot.content);
        IoStatus status = std::move(slot.status);
        ++m_taken;
        lock.unlock();
        m_changed.notify_all();
        return status;
    }

private:
    struct Slot {
        bool filled = false;
        std::string content;
        IoStatus status;
    };

    void Work() {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [&] {
                return m_stop || m_claimed == m_paths.size() || m_claimed < m_taken + kWindow;
            });
            if (m_stop || m_claimed == m_paths.size()) {
                return;
            }
            const std::size_t index = m_claimed++;
            lock.unlock();
            std::string content;
            IoStatus status = ReadFile(m_paths[index], m_limit, content);
            lock.lock();
            Slot& slot = m_slots[index % kWindow];
            slot.content = std::move(content);
            slot.status = std::move(status);
            slot.filled = true;
            m_changed.notify_all();
        }
    }

    const std::vector<std::string>& m_paths;
    const std::uint64_t m_limit;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_claimed; ///< next file that a thread will read
    std::size_t m_taken;   ///< next file that the caller will take
    bool m_stop = false;
    std::array<Slot, kWindow> m_slots;
    std::array<std::thread, kThreads> m_threads;
};

ReadAhead::ReadAhead(std::vector<std::string> paths, std::uint64_t limit)
    : m_paths(std::move(paths)), m_limit(limit) {}

ReadAhead::~ReadAhead() = default;

IoStatus ReadAhead::Next(std::string& content) {
    if (m_crew != nullptr) {
        return m_crew->Take(content);
    }
    IoStatus status = ReadHere(content);
    if (m_slowReads == kSlowReadsInRow && m_next < m_paths.size()) {
        m_crew = std::make_unique<Crew>(m_paths, m_limit, m_next);
    }
    return status;
}

IoStatus ReadAhead::ReadHere(std::string& content) {
    const Clock::time_point start = Clock::now();
    IoStatus status = ReadFile(m_paths[m_next++], m_limit, content);
    m_slowReads = Clock::now() - start > kSlowRead ? m_slowReads + 1 : 0;
    return status;
}

} // namespace nqp2::platform
