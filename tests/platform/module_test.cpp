// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/module.h"

#include "platform/PathText.h"
#include "platform/SystemFolder.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace nqp2::platform {
namespace {

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
    EXPECT_EQ(LoadModule(folder + L"\\absent.dll"), nullptr);
    EXPECT_EQ(LoadModule(folder + L"\\"), nullptr);
    EXPECT_EQ(LoadModule(folder + L"\\.dll"), nullptr);
    EXPECT_EQ(LoadModule(L""), nullptr);
    EXPECT_EQ(LoadModule(L"c.dll"), nullptr) << "libc is loaded, but is searched for nowhere";
    EXPECT_EQ(ModuleEntry(nullptr, "malloc"), nullptr);
    FreeModule(nullptr);
}

TEST_F(ModuleTest, SystemFolderHoldsTheSystemsLibraries) {
    const CString folder = SystemFolder();
    EXPECT_TRUE(std::filesystem::is_directory(PosixPath(folder))) << folder;
    EXPECT_NE(folder.GetString()[folder.GetLength() - 1], L'\\');
}

TEST_F(ModuleTest, SystemFolderLookupCanBeReplacedAndRestored) {
    const CString builtIn = SystemFolder();
    EXPECT_FALSE(SetSystemFolderLookup([] { return CString(L"Z:\\system"); }));
    EXPECT_EQ(SystemFolder(), L"Z:\\system");
    const FolderLookup previous = SetSystemFolderLookup(nullptr);
    ASSERT_TRUE(previous);
    EXPECT_EQ(previous(), L"Z:\\system");
    EXPECT_EQ(SystemFolder(), builtIn);
}

} // namespace
} // namespace nqp2::platform
