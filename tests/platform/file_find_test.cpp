// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_find.h"

#include "platform/DriveMap.h"
#include "platform/PathText.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

using ::testing::UnorderedElementsAre;

std::vector<std::string> PosixPaths(const CString& pattern) {
    IoStatus status;
    std::vector<std::string> paths;
    for (const FoundFile& file : FindFiles(pattern, status)) {
        paths.push_back(file.posixPath);
    }
    EXPECT_TRUE(status) << status.reason;
    return paths;
}

TEST(FileFind, MatchesNamesAgainstPatterns) {
    struct Row {
        const wchar_t* name;
        const wchar_t* pattern;
        bool fits;
    };
    const Row rows[] = {
        {L"0001AB.XML", L"*.XML", true},
        {L"0001AB.xml", L"*.XML", true},
        {L"x.XMLX", L"*.XML", false},
        {L"x.XML.tmp", L"*.XML", false},
        {L".nqp2-0123456789abcdef.tmp", L"*.XML", false},
        {L".XML", L"*.XML", true},
        {L"XML", L"*.XML", false},
        {L"name", L"*.*", true}, // no dot needed
        {L"name", L"*.", false},
        {L"", L"*", true},
        {L"", L"?", false},
        {L"abc", L"", false},
        {L"abc", L"a?c", true},
        {L"abc", L"a?", false},
        {L"abcabd", L"*AB?", true},
        {L"aXbXc", L"a*b*c", true},
        {L"aXbX", L"a*b*c", false},
        {L"[a].xml", L"[A].*", true}, // brackets are plain
        {L"\u00E4.xml", L"\u00C4.XML", true},
        {L"\U0001F600.xml", L"?.xml", true},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(MatchesPattern(row.name, row.pattern), row.fits)
            << ::testing::PrintToString(row.name) << ::testing::PrintToString(row.pattern);
    }
}

TEST(FileFind, GivesUpQuicklyOnPatternsMadeToBeSlow) {
    std::wstring pattern;
    for (int i = 0; i < 100; ++i) {
        pattern += L"*a";
    }
    EXPECT_FALSE(MatchesPattern(std::wstring(20'000, L'a'), pattern + L"b"));
}

TEST(FileFind, KeepsTheFolderAsAskedAndTellsTheRealOne) {
    const test::TempFolder folder;
    folder.Write("Contents/clip/0001.AB.xml");
    folder.Write("Contents/clip/readme");
    folder.MakeFolder("Contents/clip/Folder.XML");
    ASSERT_TRUE(MapDrive(L"Q", folder.Path().c_str()));
    IoStatus status;
    std::vector<FoundFile> found = FindFiles(L"Q:\\CONTENTS\\CLIP\\*.XML", status);
    MapDrive(L"Q", "");
    ASSERT_TRUE(status);
    ASSERT_EQ(found.size(), 2U);
    std::sort(found.begin(), found.end(),
              [](const FoundFile& left, const FoundFile& right) { return left.path < right.path; });
    EXPECT_EQ(found[0].path, L"Q:\\CONTENTS\\CLIP\\0001.AB.xml");
    EXPECT_EQ(found[0].title, L"0001.AB");
    EXPECT_EQ(found[0].posixPath, folder.Path("Contents/clip/0001.AB.xml"));
    EXPECT_FALSE(found[0].isFolder);
    EXPECT_EQ(found[1].title, L"Folder");
    EXPECT_TRUE(found[1].isFolder);
}

TEST(FileFind, AcceptsRootsAndDoubledSeparators) {
    const test::TempFolder folder;
    const std::string path = folder.Write("10:30/CLIP/a.xml");
    const CString root = InterfaceRoot(folder.Path("10:30"));
    EXPECT_THAT(PosixPaths(root + L"\\CLIP\\*.XML"), UnorderedElementsAre(path));
    EXPECT_EQ(PosixPaths(root + L"\\\\CLIP\\\\a.*").size(), 1U);
    EXPECT_THAT(PosixPaths(root + L"\\CLIP\\"), UnorderedElementsAre()) << "no name, no match";
}

TEST(FileFind, FindsNamesThatAreNoUtf8AndOpensThem) {
    const test::TempFolder folder;
    folder.Write("caf\xE9.XML", "content");
    IoStatus status;
    const auto found = FindFiles(InterfaceRoot(folder.Path()) + L"\\*.xml", status);
    ASSERT_EQ(found.size(), 1U);
    std::string content;
    EXPECT_TRUE(Files().Read(found[0].posixPath, 100, content));
    EXPECT_TRUE(Files().Read(PosixPath(found[0].path), 100, content));
}

TEST(FileFind, TellsAFolderThatIsMissingOrBreaksOff) {
    const test::TempFolder folder;
    folder.Write("a.xml");
    folder.Write("b.xml");
    const CString pattern = InterfaceRoot(folder.Path()) + L"\\*.xml";
    IoStatus status;
    EXPECT_TRUE(FindFiles(L"", status).empty() && status) << "the current folder has no such name";
    EXPECT_TRUE(FindFiles(L"Z:\\*.*", status).empty());
    EXPECT_EQ(status.error, IoError::NotFound);
    EXPECT_TRUE(FindFiles(InterfaceRoot(folder.Path()) + L"\\none\\*.*", status).empty());
    EXPECT_EQ(status.error, IoError::NotFound);

    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.Fail({.error = IoError::Device, .times = 1, .keptEntries = 1});
    EXPECT_EQ(FindFiles(pattern, status).size(), 1U);
    EXPECT_EQ(status.error, IoError::Device);
    EXPECT_EQ(FindFiles(pattern, status).size(), 2U) << "healed";
    EXPECT_TRUE(status);
}

} // namespace
} // namespace nqp2::platform
