// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_lock.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>
#include <vector>

namespace nqp2::platform {
namespace {

using namespace std::chrono_literals;

TEST(FolderLock, AHeldFolderIsRefusedAtTheDeadlineAndFreeAgainLater) {
    const test::TempFolder folder;
    std::optional<FolderLock> first(folder.Path());
    ASSERT_TRUE(*first);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(FolderLock(folder.Path(), 30ms));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
    first.reset();
    EXPECT_TRUE(FolderLock(folder.Path(), 0ms));
}

TEST(FolderLock, OneAtATimeIsInside) {
    const test::TempFolder folder;
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (int turn = 0; turn < 5; ++turn) {
                    const FolderLock lock(folder.Path(), 60s);
                    most = std::max(most.load(), ++inside);
                    std::this_thread::sleep_for(1ms);
                    --inside;
                }
            });
        }
    }
    EXPECT_EQ(most, 1);
}

TEST(FolderLock, WhatCannotBeLockedIsUsedWithout) {
    const test::TempFolder folder;
    folder.Write("file", "");
    const std::string none[] = {"", folder.Path("none"), folder.Path("file"), "/proc/self"};
    for (const std::string& path : none) {
        EXPECT_TRUE(FolderLock(path, 0ms)) << path;
    }
}

} // namespace
} // namespace nqp2::platform
