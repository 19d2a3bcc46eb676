// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Lets allocations fail. For one source of a test program alone: it takes the place of malloc.

#pragma once

#include "tests/support/child_process.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace nqp2::test::memory {

inline std::atomic<long> failing = 0; ///< the number of the allocation that fails; 0: none
inline std::atomic<bool> isCounting = false;
inline std::atomic<bool> allFollowingFail = false;
inline std::atomic<long> allocationsMade = 0;

#ifndef NQP2_MEMORY_IS_INSTRUMENTED
inline bool Fails() noexcept {
    const long number = isCounting ? ++allocationsMade : 0;
    const bool fails = number != 0 && (number == failing || (allFollowingFail && number > failing));
    errno = fails ? ENOMEM : errno;
    return fails;
}
#endif

} // namespace nqp2::test::memory

#ifndef NQP2_MEMORY_IS_INSTRUMENTED
// The C library's own, which it offers to who takes their place.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

void* malloc(std::size_t size) {
    return nqp2::test::memory::Fails() ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    return nqp2::test::memory::Fails() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
    return nqp2::test::memory::Fails() ? nullptr : __libc_realloc(memory, size);
}
}
#endif
