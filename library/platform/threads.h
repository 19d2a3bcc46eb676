// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <thread>
#include <utility>

namespace nqp2::platform {

/// Whether a thread may be asked for now; false only within a ScopedThreadLimit that is used up.
bool MayStartThread();

/// Runs `work` on a thread of its own. What comes back is not joinable when there is none to be had:
/// the limit of processes is reached, or memory is short.
template <class Work>
std::thread TryThread(Work work) noexcept {
    try {
        return MayStartThread() ? std::thread(std::move(work)) : std::thread();
    } catch (...) {
        return {};
    }
}

/// Lets that many threads start during its own lifetime and fails all others. For tests.
class ScopedThreadLimit {
public:
    explicit ScopedThreadLimit(int threads);
    ~ScopedThreadLimit();
    ScopedThreadLimit(const ScopedThreadLimit&) = delete;
    ScopedThreadLimit& operator=(const ScopedThreadLimit&) = delete;
};

} // namespace nqp2::platform
