// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "tests/support/child_process.h"

#include <functional>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>

namespace nqp2::test {

/// Runs a test's body in a process that sees a file system of its own, of that size, under `path`.
inline void WithMedium(const std::string& path, const char* size,
                       const std::function<void()>& body) {
    constexpr int kPassed = 7;
    constexpr int kCannotMount = 77;
    const int result = RunInChild([&] {
        const std::string options = std::string("size=") + size;
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("medium", path.c_str(), "tmpfs", 0, options.c_str()) != 0) {
            return kCannotMount;
        }
        body();
        return testing::Test::HasFailure() ? 1 : kPassed;
    });
    if (result == kCannotMount) {
        GTEST_SKIP() << "a file system cannot be mounted here";
    }
    EXPECT_EQ(result, kPassed);
}

} // namespace nqp2::test
