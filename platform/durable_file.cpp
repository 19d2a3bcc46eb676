// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/durable_file.h"

#include "platform/descriptor.h"
#include "platform/system_status.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

bool Lock(int file) {
    return flock(file, LOCK_EX | LOCK_NB) == 0;
}

} // namespace

std::string TemporaryName(std::string_view ending) {
    std::uint64_t random = 0;
    if (getentropy(&random, sizeof random) != 0) {
        return {};
    }
    std::array<char, 20> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(random));
    return std::string(kTemporaryPrefix).append(digits.data()).append(ending);
}

bool ClaimTemporary(int file) {
    static_cast<void>(Lock(file));
    struct stat facts = {};
    return fstat(file, &facts) != 0 || facts.st_nlink != 0;
}

bool IsAbandoned(int file) {
    return Lock(file);
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

IoStatus FlushFolder(int folder) {
    const Descriptor readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable && errno == EACCES) {
        return {}; // a folder that may be written but not read cannot be flushed
    }
    return readable ? FlushToMedium(readable.Get()) : SystemStatus(errno);
}

} // namespace nqp2::platform
