// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DebugOutput.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/SystemFolder.h"
#include "platform/diagnostics.h"
#include "platform/module.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

namespace nqp2::platform {
namespace {

class HooksTest : public testing::Test {
protected:
    void TearDown() override {
        SetDebugOutput(nullptr);
        SetMessageBoxSink(nullptr);
        SetSystemFolderLookup(nullptr);
    }
};

TEST_F(HooksTest, TextsGoToTheHostsSinksOrNowhereOrToStandardError) {
    testing::internal::CaptureStderr();
    OutputDebugStringW(L"lost");
    MessageBoxW(L"no XML \u00E4");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "no XML \xC3\xA4\n");

    std::vector<CString> texts;
    SetMessageBoxSink([&](const CString& text) { texts.push_back(text); });
    EXPECT_FALSE(SetDebugOutput([&](const CString& text) {
        texts.push_back(text);
        SetDebugOutput([&](const CString& later) { texts.push_back(L"later " + later); });
        OutputDebugStringW(L"inner");
    }));
    MessageBoxW(L"box");
    OutputDebugStringW(L"outer");
    OutputDebugStringW(nullptr);
    const TextSink previous = SetDebugOutput(nullptr);
    OutputDebugStringW(L"lost");
    previous(L"by hand");
    EXPECT_EQ(texts, (std::vector<CString>{L"box", L"outer", L"later inner", L"later ",
                                           L"later by hand"}));
}

TEST_F(HooksTest, NoTextIsLostOrDoubledWhileSinksChange) {
    constexpr int kTexts = 2000;
    std::atomic<int> first = 0;
    std::atomic<int> second = 0;
    SetDebugOutput([&](const CString&) { ++first; });
    const auto write = [] {
        for (int i = 0; i < kTexts; ++i) {
            OutputDebugStringW(L"text");
        }
    };
    {
        const std::jthread one(write);
        const std::jthread two(write);
        for (int i = 0; i < 200; ++i) {
            SetDebugOutput([&](const CString&) { ++second; });
            SetDebugOutput([&](const CString&) { ++first; });
        }
    }
    EXPECT_EQ(first + second, 2 * kTexts);
}

TEST_F(HooksTest, LibrariesAreLoadedFromTheFolderThatIsNamedAlone) {
    const CString folder = InterfaceRoot(NQP2_LOADABLE_MODULE_FOLDER);
    for (const wchar_t* const name : {L"\\loadable.dll", L"\\loadable.DLL", L"\\loadable"}) {
        const ModuleHandle module = LoadModule(folder + name);
        void* const entry = ModuleEntry(module, "LoadableModuleAnswer");
        ASSERT_NE(entry, nullptr) << CString(name);
        EXPECT_EQ(reinterpret_cast<int (*)()>(entry)(), 42);
        EXPECT_EQ(ModuleEntry(module, "NoSuchEntry"), nullptr);
        FreeModule(module);
    }
    for (const CString& path : {folder + L"\\absent.dll", folder + L"\\", folder + L"\\.dll",
                                CString(), CString(L"c.dll")}) { // libc is loaded already
        EXPECT_EQ(LoadModule(path), nullptr) << path;
    }
    EXPECT_EQ(ModuleEntry(nullptr, "malloc"), nullptr);
    FreeModule(nullptr);
    const CString builtIn = SystemFolder();
    EXPECT_TRUE(std::filesystem::is_directory(PosixPath(builtIn))) << builtIn;
    EXPECT_FALSE(SetSystemFolderLookup([] { return CString(L"Z:\\system"); }));
    EXPECT_EQ(SystemFolder(), L"Z:\\system");
    EXPECT_EQ(SetSystemFolderLookup(nullptr)(), L"Z:\\system");
    EXPECT_EQ(SystemFolder(), builtIn);
}

} // namespace
} // namespace nqp2::platform
