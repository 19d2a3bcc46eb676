// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DebugOutput.h"
#include "platform/diagnostics.h"
#include "platform/module.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace nqp2::platform {
namespace {

TEST(HooksTest, TextsGoToTheHostsSinksOrNowhereOrToStandardError) {
    testing::internal::CaptureStderr();
    OutputDebugStringW(L"lost");
    MessageBoxW(L"no XML \u00E4");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "no XML \xC3\xA4\n");
    std::vector<CString> texts;
    SetDebugOutput([&](const CString& text) {
        texts.push_back(text);
        SetDebugOutput([&](const CString& later) { texts.push_back(L"later " + later); });
        OutputDebugStringW(L"inner");
    });
    OutputDebugStringW(L"outer");
    OutputDebugStringW(nullptr);
    SetDebugOutput(nullptr)(L"by hand");
    OutputDebugStringW(L"lost");
    EXPECT_EQ(texts, (std::vector<CString>{L"outer", L"later inner", L"later ", L"later by hand"}));
}

TEST(HooksTest, NoTextIsLostOrDoubledWhileSinksChange) {
    constexpr int kTexts = 2000;
    std::atomic<int> written = 0;
    const auto set = [&] { SetDebugOutput([&](const CString&) { ++written; }); };
    set();
    {
        const std::jthread writer([] {
            for (int i = 0; i < kTexts; ++i) {
                OutputDebugStringW(L"text");
            }
        });
        for (int i = 0; i < 400; ++i) {
            set();
        }
    }
    SetDebugOutput(nullptr);
    EXPECT_EQ(written, kTexts);
}

TEST(HooksTest, LibrariesAreLoadedFromTheFolderThatIsNamedAlone) {
    for (const CString& path : {SystemFolder() + L"\\.dll", CString(), CString(L"c.dll")}) {
        EXPECT_EQ(LoadModule(path), nullptr) << path; // libc is loaded already
    }
}

} // namespace
} // namespace nqp2::platform
