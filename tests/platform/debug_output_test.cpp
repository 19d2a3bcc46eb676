// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/DebugOutput.h"

#include "platform/diagnostics.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace nqp2::platform {
namespace {

class DebugOutputTest : public testing::Test {
protected:
    void TearDown() override {
        SetDebugOutput(nullptr);
        SetMessageBoxSink(nullptr);
    }
};

TEST_F(DebugOutputTest, IsSilentUntilASinkIsSet) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    OutputDebugStringW(L"lost");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

    std::vector<CString> texts;
    SetDebugOutput([&](const CString& text) { texts.push_back(text); });
    OutputDebugStringW(L"selectSingleNode Failed");
    OutputDebugStringW(nullptr);
    SetDebugOutput(nullptr);
    OutputDebugStringW(L"lost");
    EXPECT_EQ(texts, (std::vector<CString>{L"selectSingleNode Failed", L""}));
}

TEST_F(DebugOutputTest, GivesBackThePreviousSink) {
    int first = 0;
    EXPECT_FALSE(SetDebugOutput([&](const CString&) { ++first; }));
    const TextSink previous = SetDebugOutput([](const CString&) {});
    ASSERT_TRUE(previous);
    previous(CString());
    EXPECT_EQ(first, 1);
}

TEST_F(DebugOutputTest, MessageBoxesPrintOneLineOnStandardErrorUntilASinkIsSet) {
    testing::internal::CaptureStderr();
    MessageBoxW(L"no XML \u00E4");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "no XML \xC3\xA4\n");

    CString shown;
    SetMessageBoxSink([&](const CString& text) { shown = text; });
    testing::internal::CaptureStderr();
    MessageBoxW(L"box");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(shown, L"box");
}

TEST_F(DebugOutputTest, ASinkMayCallBackAndReplaceItself) {
    std::vector<CString> texts;
    SetDebugOutput([&](const CString& text) {
        texts.push_back(text);
        SetDebugOutput([&](const CString& later) { texts.push_back(L"later " + later); });
        OutputDebugStringW(L"inner");
    });
    OutputDebugStringW(L"outer");
    EXPECT_EQ(texts, (std::vector<CString>{L"outer", L"later inner"}));
}

TEST_F(DebugOutputTest, NoTextIsLostOrDoubledWhileSinksChange) {
    constexpr int kTexts = 2000;
    std::atomic<int> first = 0;
    std::atomic<int> second = 0;
    SetDebugOutput([&](const CString&) { ++first; });
    const auto write = [] {
        for (int i = 0; i < kTexts; ++i) {
            OutputDebugStringW(L"text");
        }
    };
    std::thread one(write);
    std::thread two(write);
    for (int i = 0; i < 200; ++i) {
        SetDebugOutput([&](const CString&) { ++second; });
        SetDebugOutput([&](const CString&) { ++first; });
    }
    one.join();
    two.join();
    EXPECT_EQ(first + second, 2 * kTexts);
}

} // namespace
} // namespace nqp2::platform
