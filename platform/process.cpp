// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/process.h"

#include <atomic>
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

std::atomic<std::int32_t> ownNumber = 0;

void ReadNumber() {
    ownNumber = getpid();
}

} // namespace

std::int32_t ProcessNumber() {
    static const bool isKept = [] {
        ReadNumber();
        return pthread_atfork(nullptr, nullptr, ReadNumber) == 0;
    }();
    return isKept ? ownNumber.load(std::memory_order_relaxed) : getpid();
}

bool IsWithinFileSizeLimit(std::uint64_t size) {
    rlimit limit{};
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
           size <= limit.rlim_cur;
}

void OpenStandardDescriptors() {
    int number = 0;
    while (number >= 0 && number <= STDERR_FILENO) {
        number = open("/dev/null", O_RDWR); // the lowest that is free
    }
    if (number >= 0) {
        close(number);
    }
}

} // namespace nqp2::platform
