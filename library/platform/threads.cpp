// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/threads.h"

#include <atomic>

namespace nqp2::platform {
namespace {

constexpr int kNoLimit = -1;
std::atomic<int> threadsLeft = kNoLimit;

} // namespace

bool MayStartThread() {
    int left = threadsLeft.load();
    while (left > 0 && !threadsLeft.compare_exchange_weak(left, left - 1)) {
    }
    return left != 0;
}

ScopedThreadLimit::ScopedThreadLimit(int threads) {
    threadsLeft.store(threads);
}

ScopedThreadLimit::~ScopedThreadLimit() {
    threadsLeft.store(kNoLimit);
}

} // namespace nqp2::platform
