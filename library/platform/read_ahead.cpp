// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/read_ahead.h"

#include "platform/file_system.h"
#include "platform/guard.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
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

constexpr int kNoLimit = -1;
std::atomic<int> threadsLeft = kNoLimit;

/// False only within a ScopedThreadLimit that is used up.
bool MayStartThread() {
    int left = threadsLeft.load();
    while (left > 0 && !threadsLeft.compare_exchange_weak(left, left - 1)) {
    }
    return left != 0;
}

/// Runs `work` on a thread of its own. What comes back is not joinable when there is none to be
/// had:
/// the limit of processes is reached, or memory is short.
template <class Work>
std::thread TryThread(Work work) noexcept {
    try {
        return MayStartThread() ? std::thread(std::move(work)) : std::thread();
    } catch (...) {
        return {};
    }
}

IoStatus ReadBytes(const FileRequest& request, std::string& bytes) {
    return request.headOnly ? ReadHead(Files(), request.path, request.limit, bytes)
                            : Files().Read(request.path, request.limit, bytes);
}

void ReadFileOrThrow(const FileRequest& request, FileContent& file) {
    FileInfo info;
    const bool known = request.withInfo && Files().Stat(request.path, info);
    file.info = known ? std::optional(info) : std::nullopt;
    file.status = ReadBytes(request, file.bytes);
}

/// What is thrown becomes the file's status.
void ReadFile(const FileRequest& request, FileContent& file) {
    try {
        ReadFileOrThrow(request, file);
    } catch (const std::bad_alloc&) {
        ++timesOutOfMemory;
        file.status = {IoError::Other, "out of memory"};
    } catch (const std::exception& error) {
        file.status = {IoError::Other, error.what()};
    }
}

/// False, whatever `file` then holds, when something was thrown.
bool TryReadFile(const FileRequest& request, FileContent& file) noexcept {
    try {
        ReadFileOrThrow(request, file);
        return true;
    } catch (...) {
        return false;
    }
}

std::vector<FileRequest> WholeFiles(std::vector<std::string> paths, std::uint64_t limit) {
    std::vector<FileRequest> requests;
    requests.reserve(paths.size());
    for (std::string& path : paths) {
        requests.push_back({std::move(path), limit});
    }
    return requests;
}

} // namespace

/// The threads and the window of files that they fill, slot by slot in turn.
class ReadAhead::Crew {
public:
    /// As many threads as there are to be had; null when there is none.
    static std::unique_ptr<Crew> Start(const std::vector<FileRequest>& requests,
                                       std::size_t first) {
        try {
            std::unique_ptr<Crew> crew(new Crew(requests, first));
            return crew->m_threads.front().joinable() ? std::move(crew) : nullptr;
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    }

    ~Crew() {
        {
            const std::lock_guard lock(m_mutex);
            m_stop = true;
        }
        m_changed.notify_all();
        for (std::thread& thread : m_threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
    }

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    void Take(FileContent& file) {
        std::unique_lock lock(m_mutex);
        const std::size_t index = m_taken;
        Slot& slot = m_slots[index % kWindow];
        m_changed.wait(lock, [&] { return slot.filled; });
        slot.filled = false;
        const bool hasFile = slot.hasFile;
        std::swap(file, slot.file);
        ++m_taken;
        lock.unlock();
        m_changed.notify_all();
        if (!hasFile) {
            ReadFile(m_requests[index], file);
        }
    }

private:
    struct Slot {
        bool filled = false;
        bool hasFile = false; ///< else memory was short, as it may not be for a reader alone
        FileContent file;
    };

    Crew(const std::vector<FileRequest>& requests, std::size_t first)
        : m_requests(requests), m_claimed(first), m_taken(first) {
        for (std::thread& thread : m_threads) {
            thread = TryThread([this] { Work(); });
            if (!thread.joinable()) {
                return;
            }
        }
    }

    void Work() noexcept {
        std::unique_lock lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [&] {
                return m_stop || m_claimed == m_requests.size() || m_claimed < m_taken + kWindow;
            });
            if (m_stop || m_claimed == m_requests.size()) {
                return;
            }
            const std::size_t index = m_claimed++;
            lock.unlock();
            FileContent file;
            const bool hasFile = TryReadFile(m_requests[index], file);
            lock.lock();
            Slot& slot = m_slots[index % kWindow];
            slot.file = std::move(file);
            slot.hasFile = hasFile;
            slot.filled = true;
            m_changed.notify_all();
        }
    }

    const std::vector<FileRequest>& m_requests;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::size_t m_claimed; ///< next file that a thread will read
    std::size_t m_taken;   ///< next file that the caller will take
    bool m_stop = false;
    std::array<Slot, kWindow> m_slots;
    std::array<std::thread, kThreads> m_threads;
};

ReadAhead::ReadAhead(std::vector<std::string> paths, std::uint64_t limit)
    : ReadAhead(WholeFiles(std::move(paths), limit)) {}

ReadAhead::ReadAhead(std::vector<FileRequest> requests) : m_requests(std::move(requests)) {}

ReadAhead::~ReadAhead() = default;

void ReadAhead::Next(FileContent& file) {
    if (m_crew != nullptr) {
        m_crew->Take(file);
        return;
    }
    ReadHere(file);
    if (m_slowReads == kSlowReadsInRow && m_next < m_requests.size()) {
        m_crew = Crew::Start(m_requests, m_next); // without one this thread reads on
    }
}

IoStatus ReadAhead::Next(std::string& content) {
    Next(m_file);
    content.swap(m_file.bytes);
    return std::move(m_file.status);
}

void ReadAhead::ReadHere(FileContent& file) {
    const Clock::time_point start = Clock::now();
    ReadFile(m_requests[m_next++], file);
    m_slowReads = Clock::now() - start > kSlowRead ? m_slowReads + 1 : 0;
}

ScopedThreadLimit::ScopedThreadLimit(int threads) {
    threadsLeft.store(threads);
}

ScopedThreadLimit::~ScopedThreadLimit() {
    threadsLeft.store(kNoLimit);
}

} // namespace nqp2::platform
