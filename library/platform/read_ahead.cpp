// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/read_ahead.h"

#include "platform/descriptor.h"
#include "platform/file_system.h"
#include "platform/guard.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <sys/eventfd.h>
#include <thread>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr std::size_t kThreads = 4;
// Files held at a time: enough to keep the threads busy, few enough that large files cannot take
// more than 8 MiB with the scan's limit of 256 KiB a file.
constexpr std::size_t kWindow = 16;
// Threads that found no room sleep until there is this much, so that each waking serves several.
constexpr std::size_t kRoomToWake = kWindow / 2;

// What the caller may have open beside: folders that it lists, a large file.
constexpr std::size_t kCallersFiles = 4;

constexpr int kNoLimit = -1;
std::atomic<int> threadsLeft = kNoLimit;

/// False only within a ScopedThreadLimit that is used up.
bool MayStartThread() {
    int left = threadsLeft.load();
    while (left > 0 && !threadsLeft.compare_exchange_weak(left, left - 1)) {
    }
    return left != 0;
}

/// Whether the caller has descriptors of its own while each thread has a file open: a folder that
/// it cannot list would seem to be empty.
bool AreDescriptorsLeft() {
    std::array<Descriptor, kThreads + kCallersFiles> tried;
    return std::all_of(tried.begin(), tried.end(), [](Descriptor& each) {
        each = Descriptor(eventfd(0, EFD_CLOEXEC));
        return static_cast<bool>(each);
    });
}

/// Runs `work` on a thread of its own. What comes back is not joinable when there is none to be
/// had: the limit of processes is reached, or memory is short.
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

} // namespace

/// The threads and the window of files that they fill, slot by slot in turn.
class ReadAhead::Crew {
public:
    /// As many threads as there are to be had; null when there is none, or too few descriptors.
    static std::unique_ptr<Crew> Start(const std::vector<FileRequest>& requests,
                                       std::size_t first) {
        if (!AreDescriptorsLeft()) {
            return nullptr;
        }
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
        m_room.notify_all();
        for (std::thread& thread : m_threads) {
            if (thread.joinable()) {
                thread.join();
            }
        }
    }

    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    /// The next file. False when the threads are to be ended, because the medium is quick or
    /// because one of them ran out of something: it may do for the caller alone.
    bool Take(FileContent& file) {
        std::unique_lock lock(m_mutex);
        Slot& slot = m_slots[m_taken % kWindow];
        m_filled.wait(lock, [&] { return slot.filled || (m_stop && m_claimed == m_taken); });
        if (!slot.filled || slot.fellShort) {
            return false;
        }
        slot.filled = false;
        std::swap(file, slot.file);
        ++m_taken;
        const bool wake = m_claimed - m_taken == kWindow - kRoomToWake;
        lock.unlock();
        if (wake) {
            m_room.notify_all();
        }
        return true;
    }

private:
    struct Slot {
        bool filled = false;
        bool fellShort = false; ///< of memory, descriptors or the like
        FileContent file;       ///< until it is filled that of the thread which has claimed it
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
        while (Claimable(lock)) {
            const std::size_t index = m_claimed++;
            Slot& slot = m_slots[index % kWindow];
            const bool isAsked = m_pace.IsInDoubt();
            lock.unlock();
            const std::int64_t waits = isAsked ? WaitsOfThread() : 0; // but those for room
            const ReadWatch watch;
            const bool isRead = TryReadFile(m_requests[index], slot.file);
            const bool isSlow = watch.IsSlow() && (!isAsked || WaitsOfThread() != waits);
            lock.lock();
            slot.fellShort = !isRead || slot.file.status.error == IoError::Other;
            slot.filled = true;
            m_pace.Add(isSlow);
            m_stop = m_stop || m_pace.IsQuick();
            if (index == m_taken) {
                m_filled.notify_one();
            }
        }
        m_filled.notify_one();
    }

    /// Waits for room; false when there is nothing more to read.
    bool Claimable(std::unique_lock<std::mutex>& lock) {
        const auto ended = [&] { return m_stop || m_claimed == m_requests.size(); };
        m_room.wait(lock, [&] { return ended() || m_claimed < m_taken + kWindow; });
        return !ended();
    }

    const std::vector<FileRequest>& m_requests;
    std::mutex m_mutex;
    std::condition_variable m_filled; ///< the file that the caller waits for
    std::condition_variable m_room;
    std::size_t m_claimed; ///< next file that a thread will read
    std::size_t m_taken;   ///< next file that the caller will take
    bool m_stop = false;
    ReadPace m_pace{ReadPace::Guess::Slow};
    std::array<Slot, kWindow> m_slots;
    std::array<std::thread, kThreads> m_threads;
};

ReadAhead::ReadAhead(std::vector<FileRequest> requests) : m_requests(std::move(requests)) {}

ReadAhead::~ReadAhead() = default;

void ReadAhead::Next(FileContent& file) {
    if (m_crew != nullptr && !m_crew->Take(file)) {
        m_crew.reset();
        m_waits = WaitsOfThread();
    }
    if (m_crew == nullptr) {
        ReadHere(m_requests[m_next], file);
    }
    ++m_next;
    if (m_pace.IsSlow() && m_next < m_requests.size()) {
        m_pace = ReadPace(ReadPace::Guess::Quick);
        m_crew = Crew::Start(m_requests, m_next); // without one this thread reads on
    }
}

IoStatus ReadAhead::Next(std::string& content, std::optional<FileInfo>* info) {
    Next(m_file);
    content.swap(m_file.bytes);
    if (info != nullptr) {
        *info = m_file.info;
    }
    return std::move(m_file.status);
}

void ReadAhead::ReadHere(const FileRequest& request, FileContent& file) {
    const ReadWatch watch;
    ReadFile(request, file);
    m_pace.Add(watch.IsSlow() && HasWaited());
}

/// Since this was asked last.
bool ReadAhead::HasWaited() {
    const std::int64_t before = std::exchange(m_waits, WaitsOfThread());
    return m_waits != before;
}

ScopedThreadLimit::ScopedThreadLimit(int threads) {
    threadsLeft.store(threads);
}

ScopedThreadLimit::~ScopedThreadLimit() {
    threadsLeft.store(kNoLimit);
}

} // namespace nqp2::platform
