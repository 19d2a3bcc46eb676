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
    EXPECT_FALSE(SetDebugOutput([&](const CString& text) { texts.push_back(text); }));
    OutputDebugStringW(L"selectSingleNode Failed");
    OutputDebugStringW(nullptr);
    const TextSink previous = SetDebugOutput(nullptr);
    OutputDebugStringW(L"lost");
    ASSERT_TRUE(previous);
    previous(L"by hand");
    EXPECT_EQ(texts, (std::vector<CString>{L"selectSingleNode Failed", L"", L"by hand"}));
}

TEST_F(DebugOutputTest, MessageBoxesPrintOneLineOnStandardErrorUntilASinkIsSet) {
    testing::internal::CaptureStderr();
    MessageBoxW(L"no XML \u00E4");
    CString shown;
    SetMessageBoxSink([&](const CString& text) { shown = text; });
    MessageBoxW(L"box");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "no XML \xC3\xA4\n");
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

class ModuleTest : public testing::Test {
protected:
    void TearDown() override { SetSystemFolderLookup(nullptr); }
};

TEST_F(ModuleTest, LoadsTheLibraryBehindAWindowsPath) {
    const CString folder = InterfaceRoot(NQP2_LOADABLE_MODULE_FOLDER);
    for (const wchar_t* const name : {L"\\loadable.dll", L"\\loadable.DLL", L"\\loadable"}) {
        const ModuleHandle module = LoadModule(folder + name);
        ASSERT_NE(module, nullptr) << CString(name);
        void* const entry = ModuleEntry(module, "LoadableModuleAnswer");
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(reinterpret_cast<int (*)()>(entry)(), 42);
        EXPECT_EQ(ModuleEntry(module, "NoSuchEntry"), nullptr);
        FreeModule(module);
    }
}

TEST_F(ModuleTest, AbsentLibrariesAreNull) {
    const CString folder = InterfaceRoot(NQP2_LOADABLE_MODULE_FOLDER);
    for (const wchar_t* const name : {L"\\absent.dll", L"\\", L"\\.dll"}) {
        EXPECT_EQ(LoadModule(folder + name), nullptr) << CString(name);
    }
    EXPECT_EQ(LoadModule(L""), nullptr);
    EXPECT_EQ(LoadModule(L"c.dll"), nullptr) << "libc is loaded, but is searched for nowhere";
    EXPECT_EQ(ModuleEntry(nullptr, "malloc"), nullptr);
    FreeModule(nullptr);
}

TEST_F(ModuleTest, SystemFolderLookupCanBeReplacedAndRestored) {
    const CString builtIn = SystemFolder();
    EXPECT_TRUE(std::filesystem::is_directory(PosixPath(builtIn))) << builtIn;
    EXPECT_NE(builtIn.Right(1), L"\\");
    EXPECT_FALSE(SetSystemFolderLookup([] { return CString(L"Z:\\system"); }));
    EXPECT_EQ(SystemFolder(), L"Z:\\system");
    EXPECT_EQ(SetSystemFolderLookup(nullptr)(), L"Z:\\system");
    EXPECT_EQ(SystemFolder(), builtIn);
}

} // namespace
} // namespace nqp2::platform
