// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/durable_file.h"

#include "platform/wait.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <limits>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nqp2::platform {

std::string TemporaryName() {
    std::uint64_t random = 0;
    if (getentropy(&random, sizeof random) != 0) {
        return {};
    }
    std::array<char, 20> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(random));
    return std::string(kTemporaryPrefix).append(digits.data()).append(kTemporaryEnding);
}

bool IsLeftoverName(std::string_view name) {
    static constexpr std::string_view kEndings[] = {kTemporaryEnding, kLockEnding,
                                                    ".tmp"}; // of earlier versions
    return name.starts_with(kTemporaryPrefix) &&
           std::any_of(std::begin(kEndings), std::end(kEndings),
                       [&](std::string_view ending) { return name.ends_with(ending); });
}

bool FitsFileSizeLimit(std::uint64_t end) {
    return end <= MostFileSize();
}

std::uint64_t MostFileSize() {
    struct rlimit limit = {};
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY
               ? std::numeric_limits<std::uint64_t>::max()
               : limit.rlim_cur;
}

bool HasName(int file, int folder, const char* name) {
    struct stat open = {};
    struct stat named = {};
    return fstat(file, &open) == 0 && fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           open.st_ino == named.st_ino && open.st_dev == named.st_dev;
}

IoStatus LockOpen(int file, LockKind kind, std::chrono::milliseconds patience) {
    const auto wait = std::max(patience, std::chrono::milliseconds(0)).count();
    if (LockWithin(file, Deadline(static_cast<std::uint32_t>(wait)),
                   kind == LockKind::Alone ? LOCK_EX : LOCK_SH)) {
        return {};
    }
    return errno == EWOULDBLOCK ? IoStatus{IoError::Busy, "somebody else is using it"}
                                : SystemStatus(errno);
}

/// Some file systems have nothing to flush and say so; that is no failure.
IoStatus FlushToMedium(int file) {
    int result = 0;
    do {
        result = fsync(file);
    } while (result != 0 && errno == EINTR);
    const bool nothingToFlush = result != 0 && (errno == EINVAL || errno == ENOTSUP);
    return result == 0 || nothingToFlush ? IoStatus{} : SystemStatus(errno);
}

} // namespace nqp2::platform
