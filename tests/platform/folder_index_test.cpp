// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_index.h"

#include "platform/file_find.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace nqp2::platform {
namespace {

using test::Operation;

std::string Found(const FolderIndex& index, std::string_view name) {
    const FolderEntry* const entry = index.Find(name);
    return entry != nullptr ? entry->name : "(none)";
}

TEST(FolderIndexTest, FindsNamesInAnyLetterCase) {
    const test::TempFolder folder;
    for (const char* name : {"0001AB.MXF", "b.mxf", "B.MXF", "B.mxf", "\u00E4.mxf", "\xE9.mxf"}) {
        folder.Write(name);
    }
    folder.MakeFolder("Sub");
    const FolderIndex index = FolderIndex::Read(folder.Path());
    ASSERT_TRUE(index.Status());
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"0001AB.MXF", "0001AB.MXF"},
        {"0001ab.mxf", "0001AB.MXF"},
        {"b.mxf", "b.mxf"}, // three differ in case only: the exact one
        {"b.MXF", "B.MXF"}, // none is exact: the first in sorted order
        {"\u00C4.MXF", "\u00E4.mxf"},
        {"\xE9.MXF", "\xE9.mxf"}, // no UTF-8: the bytes as they are
        {"\xC9.MXF", "(none)"},
        {"SUB", "Sub"},
        {"", "(none)"},
        {".", "(none)"},
        {"Sub/", "(none)"},
        {"./b.mxf", "(none)"},
        {"Sub\\..\\b.mxf", "(none)"},
    };
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(Found(index, name), expected) << name;
    }
    EXPECT_EQ(index.Find("sub")->kind, EntryKind::Folder);
    EXPECT_TRUE(index.Contains("B.Mxf"));
}

TEST(FolderIndexTest, CostsOneListingHoweverMuchIsAsked) {
    const test::TempFolder folder;
    for (int i = 0; i < 500; ++i) {
        folder.Write("CLIP" + std::to_string(i) + ".MXF");
    }
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    const FolderIndex index = FolderIndex::Read(folder.Path());
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(index.Contains("clip" + std::to_string(i) + ".mxf"), i < 500);
    }
    EXPECT_EQ(files.Calls(Operation::List), 1U);
    EXPECT_EQ(files.Calls(), 1U);
}

TEST(FolderIndexTest, FindsTheFolderItselfInAnyLetterCase) {
    const test::TempFolder folder;
    folder.Write("contents/Video/a.MXF");
    EXPECT_TRUE(FolderIndex::Read(folder.Path("CONTENTS//VIDEO/")).Contains("A.mxf"));
}

TEST(FolderIndexTest, AnswersAsEmptyForAFolderThatCannotBeRead) {
    EXPECT_FALSE(FolderIndex().Contains("file"));
    const test::TempFolder folder;
    folder.Write("file");
    const FolderIndex missing = FolderIndex::Read(folder.Path("none"));
    EXPECT_EQ(missing.Status().error, IoError::NotFound);
    EXPECT_FALSE(missing.Contains("file"));

    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.Fail({.error = IoError::Denied, .operation = Operation::List});
    const FolderIndex denied = FolderIndex::Read(folder.Path());
    EXPECT_EQ(denied.Status().error, IoError::Denied);
    EXPECT_FALSE(denied.Contains("file"));
}

TEST(FolderIndexTest, KeepsWhatCameBeforeTheMediumFailed) {
    const test::TempFolder folder;
    folder.Write("a");
    folder.Write("b");
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.Fail({.error = IoError::Device, .operation = Operation::List, .keptEntries = 1});
    const FolderIndex index = FolderIndex::Read(folder.Path());
    EXPECT_EQ(index.Status().error, IoError::Device);
    ASSERT_EQ(index.Entries().size(), 1U);
    EXPECT_TRUE(index.Contains(index.Entries()[0].name));
}

} // namespace
} // namespace nqp2::platform
