// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/media_file.h"

#include "platform/descriptor.h"
#include "platform/io_status.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace nqp2::worker {
namespace {

std::chrono::nanoseconds OwnProcessorTime() {
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

class BoundedFile final : public MediaInput {
public:
    BoundedFile(std::string path, const std::function<bool()>& goesOn, const MediaLimits& limits)
        : m_path(std::move(path)), m_goesOn(goesOn), m_bytesLeft(limits.bytes),
          m_end(OwnProcessorTime() + limits.processorTime) {}

    /// Never waits on a pipe or device.
    Outcome Open() {
        m_file = platform::Descriptor(open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        struct stat facts = {};
        if (!m_file || fstat(m_file.Get(), &facts) != 0) {
            return Failure("read", m_path, platform::SystemStatus(errno));
        }
        m_size = static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0));
        return S_ISREG(facts.st_mode) ? Outcome() : Failure(m_path + " is no file.");
    }

    [[nodiscard]] const std::string& Name() const override { return m_path; }
    [[nodiscard]] std::uint64_t Size() const override { return m_size; }

    std::int64_t ReadAt(std::uint64_t position, char* buffer, std::size_t capacity) override {
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
            m_stop = Failure("read", m_path, platform::SystemStatus(errno));
        }
        m_bytesLeft -= static_cast<std::uint64_t>(std::max<ssize_t>(count, 0));
        return count;
    }

    [[nodiscard]] bool GoesOn() override {
        if (m_stop && !m_goesOn()) {
            m_stop = Failure("Cancelled.");
        } else if (m_stop && (m_bytesLeft == 0 || OwnProcessorTime() > m_end)) {
            m_stop = Failure(m_path + " does not tell what it is within the bytes and the time "
                                      "that are spent on a camera file.");
        }
        return static_cast<bool>(m_stop);
    }

    /// Why reading had to end, if it had to.
    [[nodiscard]] const Outcome& Stop() const { return m_stop; }

private:
    std::string m_path;
    const std::function<bool()>& m_goesOn;
    std::uint64_t m_bytesLeft;
    std::chrono::nanoseconds m_end;
    std::uint64_t m_size = 0;
    platform::Descriptor m_file;
    Outcome m_stop;
};

} // namespace

Outcome ReadMediaFile(const std::string& path, const std::function<bool()>& goesOn,
                      MediaFacts& facts, const MediaLimits& limits) {
    facts = {};
    const MediaModule* module = nullptr;
    if (Outcome outcome = LoadMediaModule(module); !outcome) {
        return outcome;
    }
    BoundedFile file(path, goesOn, limits);
    if (Outcome outcome = file.Open(); !outcome) {
        return outcome;
    }
    MediaFacts found;
    const Outcome outcome = module->Describe(file, found);
    if (!file.Stop()) {
        return file.Stop(); // whatever was found until then is half of it
    }
    if (!outcome) {
        return Failure("Cannot understand " + path + ": " + outcome.error + ".");
    }
    facts = std::move(found);
    return {};
}

} // namespace nqp2::worker
