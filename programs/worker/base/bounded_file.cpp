// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/base/bounded_file.h"

#include "copy/failure.h"
#include "platform/io_status.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace nqp2::worker {
namespace {

std::chrono::nanoseconds OwnProcessorTime() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

BoundedFile::BoundedFile(std::string path, const std::function<bool()>& goesOn,
                         const MediaLimits& limits)
    : m_path(std::move(path)), m_goesOn(goesOn), m_bytesLeft(limits.bytes),
      m_end(OwnProcessorTime() + limits.processorTime) {
    Open();
}

void BoundedFile::Open() {
    m_file = platform::Descriptor(open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat facts = {};
    if (!m_file || fstat(m_file.Get(), &facts) != 0) {
        throw copy::Failure("read", m_path, platform::SystemStatus(errno));
    }
    if (!S_ISREG(facts.st_mode)) {
        throw copy::Failure(m_path + " is no file.");
    }
    m_size = static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0));
}

std::int64_t BoundedFile::ReadAt(std::uint64_t position, char* buffer,
                                 std::size_t capacity) noexcept {
    constexpr std::uint64_t kMost = std::numeric_limits<off_t>::max();
    if (!GoesOn()) {
        return -1;
    }
    ssize_t count = -1;
    do {
        count = pread(m_file.Get(), buffer, std::min<std::uint64_t>(capacity, m_bytesLeft),
                      static_cast<off_t>(std::min(position, kMost)));
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        m_stop = Stop::Error;
        m_error = errno;
    }
    m_bytesLeft -= static_cast<std::uint64_t>(std::max<ssize_t>(count, 0));
    return count;
}

bool BoundedFile::GoesOn() noexcept {
    if (m_stop == Stop::None && !m_goesOn()) {
        m_stop = Stop::Cancelled;
    } else if (m_stop == Stop::None && (m_bytesLeft == 0 || OwnProcessorTime() > m_end)) {
        m_stop = Stop::Limit;
    }
    return m_stop == Stop::None;
}

void BoundedFile::RequireNotStopped() const {
    switch (m_stop) {
    case Stop::None:
        return;
    case Stop::Cancelled:
        throw copy::Failure("Cancelled.");
    case Stop::Error:
        throw copy::Failure("read", m_path, platform::SystemStatus(m_error));
    case Stop::Limit:
        throw copy::Failure(m_path + " does not tell what it is within the bytes and the time "
                                     "that are spent on a camera file.");
    }
}

} // namespace nqp2::worker
