// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/process.h"

#include "NQP2ParserU/ProgramFolder.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <pthread.h>
#include <sys/resource.h>
#include <system_error>
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

std::size_t AllowOpenFiles(std::size_t wanted) {
    struct rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return 0;
    }
    if (limit.rlim_cur < wanted) {
        struct rlimit more = {std::min<rlim_t>(wanted, limit.rlim_max), limit.rlim_max};
        limit = setrlimit(RLIMIT_NOFILE, &more) == 0 ? more : limit;
    }
    return static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur, wanted));
}

} // namespace nqp2::platform

namespace nqp2 {

std::string ProgramFolder() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().native();
}

} // namespace nqp2
