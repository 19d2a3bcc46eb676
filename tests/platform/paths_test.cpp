// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/place.h"
#include "platform/unicode.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

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
        {L"1:\\x", "1/x"}, // one element, but no letter
        {L"/media/card 10:30/x\\CONTENTS\\", "/media/card 10:30/x/CONTENTS/"},
        {L"/media/card 10:30:\\CONTENTS\\", "/media/card 10:30/CONTENTS/"},
        {L"/media/a\\b:\\CONTENTS", "/media/a\\b/CONTENTS"}, // the folder's own backslash
        {L"/a:\\b:\\c", "/a/b:/c"},                          // the first one ends the drive part
        {L"a\\b", "a/b"},
        {L"", ""},
        {L"/\u0416\U0001F600", "/\u0416\U0001F600"}};
    for (const auto& [path, posix] : rows) {
        EXPECT_EQ(PosixPath(path), posix);
    }
    EXPECT_EQ(PosixPath(CString(L"/etc/passwd\0.XML", 16)), "") << "it would be cut there";
    EXPECT_EQ(PosixPath(CString(L"E:\\\0", 4)), "");
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
    EXPECT_EQ(InterfaceRoot("/media/card///"), L"/media/card:");
    EXPECT_EQ(InterfaceRoot("///"), L"/:");
    EXPECT_EQ(PosixPath(InterfaceRoot("E") + L"\\x"), "./E/x") << "no drive";
    for (const std::string_view none :
         {std::string_view(), std::string_view("/media/a:\\b"), std::string_view("/a\0b", 4)}) {
        EXPECT_EQ(InterfaceRoot(none), L"") << "the form cannot say it";
    }
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
        {"CONTENTS/\xE9T\xE9", "Contents/\xE9t\xE9"}};
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(Found(name), expected) << name;
    }
}

TEST_F(CaseBlind, FindsNothingUnderPathsThatNameNothing) {
    std::string endless = m_folder.Path();
    for (int i = 0; i < 100'000; ++i) {
        endless += "/CONTENTS";
    }
    for (const std::string& path : {std::string(), m_folder.Path("root file") + '\0', endless}) {
        EXPECT_FALSE(PathExists(path));
    }
    EXPECT_TRUE(PathExists("/DEV/NULL"));
    ASSERT_EQ(symlink("nowhere", m_folder.Path("link").c_str()), 0);
    EXPECT_EQ(Found("link"), "(none)");
    m_folder.Write("LINK");
    EXPECT_EQ(Found("Link"), "LINK") << "not the one that leads nowhere";
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

class PlaceTest : public ::testing::Test {
protected:
    PlaceTest() {
        for (const char* name : {"0001AB.MXF", "b.mxf", "B.MXF", "B.mxf", "\u00E4.mxf", "\xE9.mxf",
                                 "a\\b.mxf", "Sub/x"}) {
            m_folder.Write("10:30/Contents/Video/" + std::string(name));
        }
    }
    /// Asked for in other letters than it is written in.
    [[nodiscard]] Place Video() const { return Place(m_written); }
    static std::string FoundIn(const Place& place, const std::string& name) {
        FoundFile found;
        const IoStatus status = place.Find(TextFromNameBytes(name), found);
        EXPECT_TRUE(status || status.error == IoError::NotFound);
        EXPECT_EQ(place.Has(TextFromNameBytes(name)), static_cast<bool>(status));
        return status ? NamePart(found.posixPath) : "(none)";
    }

    test::TempFolder m_folder;
    CString m_root = InterfaceRoot(m_folder.Path("10:30"));
    CString m_written = m_root + L"\\CONTENTS\\VIDEO\\";
    std::string m_real = m_folder.Path("10:30/Contents/Video");
};

TEST_F(PlaceTest, FindsNamesInAnyLetterCase) {
    const std::pair<std::string, std::string> rows[] = {
        {"0001AB.MXF", "0001AB.MXF"}, {"0001ab.mxf", "0001AB.MXF"},
        {"b.mxf", "b.mxf"}, // three differ in case only: the exact one
        {"b.MXF", "B.MXF"}, // none is exact: the first in sorted order
        {"\u00C4.MXF", "\u00E4.mxf"}, {"\xE9.MXF", "\xE9.mxf"}, // no UTF-8: the bytes as they are
        {"\xC9.MXF", "(none)"},       {"SUB", "Sub"}};
    const Place listed = Video();
    ASSERT_TRUE(listed.Names().Status());
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(FoundIn(listed, name), expected) << name;
        EXPECT_EQ(FoundIn(Video(), name), expected) << name << " of a place that was not listed";
    }
    const std::string nul("b.mxf\0", 6);
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), nul, std::string("Sub/"),
          std::string("./b.mxf"), std::string("Sub/x"), std::string("Sub\\..\\b.mxf")}) {
        EXPECT_EQ(FoundIn(listed, name), "(none)") << name;
        EXPECT_EQ(FoundIn(Video(), name), "(none)") << name;
        EXPECT_EQ(listed.Names().Find(name), nullptr) << name;
    }
}

TEST_F(PlaceTest, KeepsTheFolderAsWrittenAndKnowsTheRealOne) {
    const Place card(m_root);
    const Place video = card.Below(L"\\CONTENTS\\").Below(L"VIDEO");
    EXPECT_EQ(video.Written(), m_root + L"\\CONTENTS\\VIDEO");
    EXPECT_EQ(video.PathOf(L"none"), m_written + L"none");
    EXPECT_EQ(video.OnDisk(), m_real);
    EXPECT_EQ(Place(m_root + L"\\\\CONTENTS\\\\VIDEO\\\\").OnDisk(), m_real);
    EXPECT_EQ(Place::At(m_real).Written(), InterfaceRoot(m_real));
    EXPECT_EQ(Place(L"/:").OnDisk(), "/");
    IoStatus status;
    std::vector<FoundFile> found = video.List(L"SUB*", status);
    ASSERT_TRUE(status && found.size() == 1);
    EXPECT_EQ(found[0].path, m_written + L"Sub");
    EXPECT_EQ(found[0].posixPath, m_real + "/Sub");
    EXPECT_TRUE(found[0].isFolder && found[0].pathIsSafe && !found[0].IsReadable());
    found = video.List(L"a*", status);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_FALSE(found[0].pathIsSafe || found[0].IsReadable()) << "its backslash leads elsewhere";
    EXPECT_EQ(found[0].title, L"a\\b");
    const PathParts parts = SplitPath(m_written + L"0001ab.mxf");
    EXPECT_EQ(FoundIn(parts.folder, "0001ab.mxf"), "0001AB.MXF");
    EXPECT_EQ(parts.name, L"0001ab.mxf");
    EXPECT_EQ(SplitPath(L"name").folder.OnDisk(), ".") << "the current folder";
    EXPECT_EQ(SplitPath(L"/media/card:").name, L"card") << "a folder as a drive";
}

TEST_F(PlaceTest, ListsEachFolderOnceAndAsksNoMoreThanItMust) {
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    const Place exact = Place::At(m_real);
    EXPECT_TRUE(exact.Has(L"b.mxf") && exact.Has(L"B.mxf") && exact.Exists());
    EXPECT_EQ(files.Calls(), 2U) << "exact names are asked for, one call each";
    EXPECT_FALSE(exact.Has(L"none"));
    EXPECT_TRUE(exact.Has(L"b.MxF"));
    EXPECT_EQ(files.Calls(Operation::List), 1U);
    EXPECT_EQ(files.Calls(), 4U) << "the names answer from now on, also for copies";
    const Place card(m_root);
    for (int turn = 0; turn < 3; ++turn) {
        const Place video = card.Below(L"CONTENTS\\VIDEO");
        EXPECT_TRUE(video.Names().Contains("B.Mxf") && video.Exists());
        EXPECT_FALSE(card.Below(L"CONTENTS\\AUDIO").Has(L"x"));
        EXPECT_TRUE(turn == 0 || files.Calls() == 0) << "what is below is kept too";
        files.ResetCalls();
    }
}

TEST_F(PlaceTest, TellsAFolderThatIsMissingFromOneThatCannotBeRead) {
    for (const CString& path : {CString(), CString(L"Z:\\x"), m_root + L"\\none",
                                m_root + L"\\none\\x", m_written + L"0001AB.MXF\\"}) {
        const Place place(path);
        FoundFile found;
        std::unique_ptr<Folder> folder;
        EXPECT_EQ(place.Look().error, IoError::NotFound) << path;
        EXPECT_EQ(place.Find(L"tmp", found).error, IoError::NotFound) << path;
        EXPECT_EQ(place.Names().Status().error, IoError::NotFound) << path;
        EXPECT_EQ(place.Open(folder).error, IoError::NotFound) << path;
    }
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.Fail({.error = IoError::Device, .operation = Operation::List, .keptEntries = 1});
    const Place cut = Place::At(m_real);
    EXPECT_EQ(cut.Names().Entries().size(), 1U) << "what came before the medium failed is kept";
    EXPECT_EQ(cut.Names().Status().error, IoError::Device);
    FoundFile found;
    EXPECT_EQ(cut.Find(L"none", found).error, IoError::Device);
    files.Fail({.error = IoError::Denied});
    EXPECT_EQ(Video().Look().error, IoError::Denied);
}

TEST_F(PlaceTest, OpensAndMakesFoldersBelow) {
    const Place card(m_root);
    std::unique_ptr<Folder> folder;
    ASSERT_TRUE(card.OpenBelow(L"CONTENTS\\VIDEO\\", folder));
    EXPECT_EQ(folder->Path(), m_real);
    EXPECT_EQ(card.OpenBelow(L"CONTENTS\\CLIP", folder).error, IoError::NotFound);
    ASSERT_TRUE(card.MakeBelow(L"\\CONTENTS\\CLIP", folder));
    EXPECT_EQ(folder->Path(), m_folder.Path("10:30/Contents/CLIP"));
    EXPECT_FALSE(card.MakeBelow(L"CONTENTS\\..\\x", folder));
    EXPECT_FALSE(card.MakeBelow(L"CONTENTS\\VIDEO\\b.mxf", folder));
}

TEST(MatchesPatternTest, TakesPatternsWithoutRegardToCaseAndQuickly) {
    const std::pair<const wchar_t*, const wchar_t*> fitting[] = {{L"0001AB.xml", L"*.XML"},
                                                                 {L".XML", L"*.XML"},
                                                                 {L"name", L"*.*"},
                                                                 {L"", L"*"},
                                                                 {L"abc", L"a?c"},
                                                                 {L"abcabd", L"*AB?"},
                                                                 {L"aXbXc", L"a*b*c"},
                                                                 {L"[a].xml", L"[A].*"},
                                                                 {L"\u00E4.xml", L"\u00C4.XML"},
                                                                 {L"\U0001F600.xml", L"?.xml"}};
    for (const auto& [name, pattern] : fitting) {
        EXPECT_TRUE(MatchesPattern(name, pattern)) << CString(name) << CString(pattern);
    }
    const std::pair<const wchar_t*, const wchar_t*> others[] = {
        {L"x.XMLX", L"*.XML"}, {L"XML", L"*.XML"}, {L"name", L"*."},   {L"", L"?"},
        {L"abc", L""},         {L"abc", L"a?"},    {L"aXbX", L"a*b*c"}};
    for (const auto& [name, pattern] : others) {
        EXPECT_FALSE(MatchesPattern(name, pattern)) << CString(name) << CString(pattern);
    }
    std::wstring slow;
    for (int i = 0; i < 100; ++i) {
        slow += L"*a";
    }
    EXPECT_FALSE(MatchesPattern(std::wstring(20'000, L'a'), slow + L"b"));
}

} // namespace
} // namespace nqp2::platform
