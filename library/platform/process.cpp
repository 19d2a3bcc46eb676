// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/process.h"

#include <atomic>
#include <pthread.h>
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
