// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/file_find.h"
#include "platform/file_system.h"
#include "platform/folder_index.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <unistd.h>
#include <vector>

namespace nqp2 {
namespace {

class PathText : public ::testing::Test {
protected:
    PathText() {
        MapDrive(L"E", "/media/card");
        MapDrive(L"R:", "/");
    }
    ~PathText() override {
        MapDrive(L"E", "");
        MapDrive(L"R", nullptr);
    }
};

TEST_F(PathText, TurnsInterfacePathsIntoPosixPaths) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"E:\\CONTENTS\\CLIP\\", "/media/card/CONTENTS/CLIP/"},
        {L"e:\\x", "/media/card/x"},
        {L"E:", "/media/card"},
        {L"R:\\CONTENTS", "/CONTENTS"}, // mapped to the root: no doubled separator
        {L"F:\\CONTENTS", ""},          // not mapped
        {L":\\x", ""},
        {L"E:x", "E:x"}, // a colon inside a name
        {L"/media/card:\\CONTENTS\\", "/media/card/CONTENTS/"},
        {L"/media/card/:\\CONTENTS", "/media/card/CONTENTS"},
        {L"card:\\x", "card/x"},
        {L"1:\\x", "1/x"}, // a single element, but no letter
        {L"/media/card 10:30/x\\CONTENTS\\", "/media/card 10:30/x/CONTENTS/"},
        {L"/media/card 10:30:\\CONTENTS\\", "/media/card 10:30/CONTENTS/"},
        {L"/media/a\\b:\\CONTENTS", "/media/a\\b/CONTENTS"}, // the folder's own backslash
        {L"/a:\\b:\\c", "/a/b:/c"},                          // the first one ends the drive part
        {L"a\\b", "a/b"},
        {L"", ""},
        {L"/\u0416\U0001F600", "/\u0416\U0001F600"},
    };
    for (const auto& [path, posix] : rows) {
        EXPECT_EQ(PosixPath(path), posix);
    }
}

TEST_F(PathText, NeverCutsAPathAtAZeroElement) {
    EXPECT_EQ(PosixPath(CString(std::wstring_view(L"/etc/passwd\0.XML", 16))), "");
    EXPECT_EQ(PosixPath(CString(std::wstring_view(L"E:\\\0", 4))), "");
}

TEST_F(PathText, MakesRootsThatNameTheSameFolder) {
    const std::string folders[] = {
        "/",
        "card",
        "/media/card 10:30",
        "/media/two::",
        "E:",
        "/media/a\\b",
        "/media/ends with backslash\\",
        "/media/\xD0\x96",
        "/media/caf\xE9",
        "/media/\xED\xB2\x80",          // the generalised form of an escape element
        "/media/\xED\xA0\x80 \xFF\xC3", // a surrogate, bytes that occur nowhere in UTF-8
    };
    for (const std::string& folder : folders) {
        const CString root = InterfaceRoot(folder);
        EXPECT_EQ(PosixPath(root), folder);
        EXPECT_EQ(PosixPath(root + L"\\CONTENTS\\"), (folder == "/" ? "" : folder) + "/CONTENTS/");
    }
}

TEST_F(PathText, KeepsRootsApartFromDrivesAndDropsTrailingSeparators) {
    EXPECT_EQ(InterfaceRoot("/media/card///"), L"/media/card:");
    EXPECT_EQ(InterfaceRoot("///"), L"/:");
    EXPECT_EQ(PosixPath(InterfaceRoot("E") + L"\\x"), "./E/x");
    EXPECT_EQ(PosixPath(InterfaceRoot("e/")), "./e");
}

TEST_F(PathText, HasNoRootForFoldersThatItCannotSay) {
    EXPECT_EQ(InterfaceRoot(""), L"");
    EXPECT_EQ(InterfaceRoot("/media/a:\\b"), L"");
    EXPECT_EQ(InterfaceRoot(std::string_view("/a\0b", 4)), L"");
}

TEST_F(PathText, AcceptsOnlyLettersAsDrives) {
    for (const wchar_t* drive : {L"", L":", L"1", L"EE", L"E:\\", L"\u00C9", L"["}) {
        EXPECT_FALSE(MapDrive(drive, "/media")) << CString(drive).GetLength();
    }
    EXPECT_FALSE(MapDrive(nullptr, "/media"));
    EXPECT_FALSE(IsDriveMapped(L'1'));
    EXPECT_TRUE(IsDriveMapped(L'e'));
    for (const char* argument : {"", "E", "=", "E=", "=/media", "EE=/media", "\xC3\x89=/media"}) {
        EXPECT_FALSE(MapDriveFromArgument(argument)) << argument;
    }
    EXPECT_EQ(PosixPath(L"E:\\x"), "/media/card/x") << "as it was";
    EXPECT_TRUE(MapDriveFromArgument("e:=/media/a=b"));
    EXPECT_EQ(PosixPath(L"E:\\x"), "/media/a=b/x");
    EXPECT_TRUE(MapDrive(L"e:", ""));
    EXPECT_FALSE(IsDriveMapped(L'E'));
    EXPECT_EQ(PosixPath(L"E:\\x"), "") << "forgotten";
}

} // namespace
} // namespace nqp2

namespace nqp2::platform {
namespace {

using test::Operation;

class CaseBlind : public ::testing::Test {
protected:
    CaseBlind() {
        m_folder.Write("Contents/Clip/0001AB.XML");
        m_folder.Write("Contents/icon/a.bmp");
        m_folder.Write("Contents/icon/A.BMP");
        m_folder.Write("Contents/ICon/only here.bmp");
        m_folder.Write("Contents/caf\xC3\xA9");
        m_folder.Write("Contents/\xE9t\xE9");
        m_folder.Write("root file");
    }
    /// What is found, relative to the folder of the test.
    std::string Found(const std::string& name) {
        const auto found = FindExisting(m_folder.Path(name));
        if (!found) {
            return "(none)";
        }
        EXPECT_EQ(found->find(m_folder.Path() + '/'), 0U) << *found;
        return found->substr(m_folder.Path().size() + 1);
    }

    test::TempFolder m_folder;
};

TEST_F(CaseBlind, FindsTheRealSpelling) {
    const std::pair<std::string, std::string> rows[] = {
        {"Contents/Clip/0001AB.XML", "Contents/Clip/0001AB.XML"},
        {"CONTENTS/CLIP/0001ab.xml", "Contents/Clip/0001AB.XML"},
        {"Contents//Clip/0001AB.XML", "Contents//Clip/0001AB.XML"}, // exists as it is written
        {"CONTENTS//CLIP///0001ab.xml", "Contents/Clip/0001AB.XML"},
        {"./contents/./clip/../CLIP", "./Contents/./Clip/../Clip"},
        {"CONTENTS/CLIP/", "Contents/Clip/"},
        {"ROOT FILE/", "(none)"}, // a trailing separator asks for a folder
        {"root file/x", "(none)"},
        {"NONE/CLIP/0001AB.XML", "(none)"},
        {"CONTENTS/ICON/A.BMP", "Contents/icon/A.BMP"}, // no exact folder: the one that has it
        {"CONTENTS/icon/A.bmp", "Contents/icon/A.BMP"}, // exact folder, first sorted file
        {"CONTENTS/ICON/a.bmp", "Contents/icon/a.bmp"}, // the exact file of several
        {"CONTENTS/ICON/ONLY HERE.BMP", "Contents/ICon/only here.bmp"},
        {"CONTENTS/ICON", "Contents/ICon"},
        {"contents/icon/only here.bmp", "(none)"}, // the exact folder wins, and has it not
        {"CONTENTS/CAF\u00C9", "Contents/caf\u00E9"},
        {"CONTENTS/\xE9T\xE9", "Contents/\xE9t\xE9"},
    };
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(Found(name), expected) << name;
    }
}

TEST_F(CaseBlind, FindsNothingUnderPathsThatNameNothing) {
    EXPECT_FALSE(PathExists(""));
    EXPECT_FALSE(PathExists(m_folder.Path("root file") + '\0'));
    std::string endless = m_folder.Path();
    for (int i = 0; i < 100'000; ++i) {
        endless += "/CONTENTS";
    }
    EXPECT_FALSE(PathExists(endless));
    EXPECT_TRUE(PathExists("/"));
    EXPECT_TRUE(PathExists("/DEV/NULL"));
}

TEST_F(CaseBlind, FindsRelativePathsFromTheCurrentFolder) {
    const std::string before = std::filesystem::current_path();
    ASSERT_EQ(chdir(m_folder.Path().c_str()), 0);
    const auto found = FindExisting("CONTENTS/clip");
    const auto file = FindExisting("ROOT FILE");
    const std::string target = FindTarget(Files(), "CONTENTS/new");
    ASSERT_EQ(chdir(before.c_str()), 0);
    EXPECT_EQ(found.value_or(""), "Contents/Clip");
    EXPECT_EQ(file.value_or(""), "root file");
    EXPECT_EQ(target, "Contents/new");
}

TEST_F(CaseBlind, AsksNoMoreThanItMustAndGivesUpWhenTheMediumFails) {
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    EXPECT_TRUE(PathExists(m_folder.Path("Contents/Clip/0001AB.XML")));
    EXPECT_EQ(files.Calls(), 1U) << "an exact name is asked for once";
    files.ResetCalls();
    EXPECT_FALSE(PathExists(m_folder.Path("Contents/Clip/none")));
    EXPECT_EQ(files.Calls(Operation::List), 1U);
    EXPECT_LE(files.Calls(Operation::Stat), 3U);
    files.ResetCalls();
    files.Fail({.error = IoError::Device});
    EXPECT_FALSE(PathExists(m_folder.Path("Contents/CLIP")));
    EXPECT_EQ(files.Calls(), 1U);
}

TEST_F(CaseBlind, KeepsANameThatIsOnlyADanglingLinkApart) {
    ASSERT_EQ(symlink("nowhere", m_folder.Path("link").c_str()), 0);
    EXPECT_FALSE(PathExists(m_folder.Path("link")));
    m_folder.Write("LINK");
    EXPECT_EQ(Found("Link"), "LINK");
}

TEST_F(CaseBlind, MakesAFolderUnlessItStands) {
    EXPECT_TRUE(EnsureFolder(m_folder.Path("CONTENTS/clip/")));
    EXPECT_TRUE(EnsureFolder(m_folder.Path("CONTENTS/NEW/")));
    EXPECT_EQ(Found("Contents/NEW/"), "Contents/NEW/");
    EXPECT_FALSE(EnsureFolder(m_folder.Path("ROOT FILE/")));
    EXPECT_FALSE(EnsureFolder(m_folder.Path("none/below/")));
    EXPECT_FALSE(EnsureFolder(""));
    EXPECT_EQ(Found("none"), "(none)");
}

std::string FoundIn(const FolderIndex& index, std::string_view name) {
    const FolderEntry* const entry = index.Find(name);
    return entry != nullptr ? entry->name : "(none)";
}

TEST(FolderIndexTest, FindsNamesInAnyLetterCase) {
    const test::TempFolder folder;
    for (const char* name : {"0001AB.MXF", "b.mxf", "B.MXF", "B.mxf", "\u00E4.mxf", "\xE9.mxf"}) {
        folder.Write(name);
    }
    folder.MakeFolder("Sub");
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
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
        {"Sub\\..\\b.mxf", "(none)"}};
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(FoundIn(index, name), expected) << name;
    }
    EXPECT_EQ(index.Find("sub")->kind, EntryKind::Folder);
    EXPECT_TRUE(index.Contains("B.Mxf"));
    EXPECT_EQ(files.Calls(), 1U) << "one listing, however much is asked";
}

TEST(FolderIndexTest, AnswersAsEmptyForAFolderThatCannotBeRead) {
    EXPECT_FALSE(FolderIndex().Contains("file"));
    const test::TempFolder folder;
    folder.Write("file");
    folder.Write("second");
    const FolderIndex missing = FolderIndex::Read(folder.Path("none"));
    EXPECT_EQ(missing.Status().error, IoError::NotFound);
    EXPECT_FALSE(missing.Contains("file"));

    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.Fail({.error = IoError::Device, .operation = Operation::List, .keptEntries = 1});
    const FolderIndex cut = FolderIndex::Read(folder.Path());
    EXPECT_EQ(cut.Status().error, IoError::Device);
    ASSERT_EQ(cut.Entries().size(), 1U) << "what came before the medium failed is kept";
    EXPECT_TRUE(cut.Contains(cut.Entries()[0].name));
}

TEST(FileFind, MatchesNamesAgainstPatterns) {
    const std::pair<const wchar_t*, const wchar_t*> fitting[] = {
        {L"0001AB.xml", L"*.XML"},
        {L".XML", L"*.XML"},
        {L"name", L"*.*"},
        {L"", L"*"},
        {L"abc", L"a?c"},
        {L"abcabd", L"*AB?"},
        {L"aXbXc", L"a*b*c"},
        {L"[a].xml", L"[A].*"},
        {L"\u00E4.xml", L"\u00C4.XML"},
        {L"\U0001F600.xml", L"?.xml"},
    };
    for (const auto& [name, pattern] : fitting) {
        EXPECT_TRUE(MatchesPattern(name, pattern)) << CString(name) << CString(pattern);
    }
    const std::pair<const wchar_t*, const wchar_t*> others[] = {
        {L"x.XMLX", L"*.XML"}, {L"x.XML.tmp", L"*.XML"},
        {L"XML", L"*.XML"},    {L"name", L"*."},
        {L"", L"?"},           {L"abc", L""},
        {L"abc", L"a?"},       {L"aXbX", L"a*b*c"},
    };
    for (const auto& [name, pattern] : others) {
        EXPECT_FALSE(MatchesPattern(name, pattern)) << CString(name) << CString(pattern);
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
    folder.Write("10:30/Contents/clip/0001.AB.xml");
    folder.Write("10:30/Contents/clip/readme");
    folder.MakeFolder("10:30/Contents/clip/Folder.XML");
    const CString root = InterfaceRoot(folder.Path("10:30"));
    IoStatus status;
    std::vector<FoundFile> found = FindFiles(root + L"\\CONTENTS\\CLIP\\*.XML", status);
    ASSERT_TRUE(status);
    ASSERT_EQ(found.size(), 2U);
    std::sort(found.begin(), found.end(),
              [](const FoundFile& left, const FoundFile& right) { return left.path < right.path; });
    EXPECT_EQ(found[0].path, root + L"\\CONTENTS\\CLIP\\0001.AB.xml");
    EXPECT_EQ(found[0].title, L"0001.AB");
    EXPECT_EQ(found[0].posixPath, folder.Path("10:30/Contents/clip/0001.AB.xml"));
    EXPECT_FALSE(found[0].isFolder);
    EXPECT_EQ(found[1].title, L"Folder");
    EXPECT_TRUE(found[1].isFolder);
    EXPECT_EQ(FindFiles(root + L"\\\\CONTENTS\\\\CLIP\\\\r*", status).size(), 1U);
    EXPECT_TRUE(FindFiles(root + L"\\CONTENTS\\CLIP\\", status).empty()) << "no name, no match";
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
