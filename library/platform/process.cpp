// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/process.h"

#include "NQP2ParserU/ProgramFolder.h"

#include <atomic>
#include <filesystem>
#include <pthread.h>
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

} // namespace nqp2::platform

namespace nqp2 {

std::string ProgramFolder() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().native();
}

} // namespace nqp2
