// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/RealPaths.h"
#include "platform/case_blind.h"
#include "platform/name_pattern.h"
#include "platform/place.h"
#include "platform/unicode.h"
#include "tests/support/faulty_file_system.h"
#include "tests/support/print_text.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace std::string_literals;

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
    // "R" is the root; a colon or backslash may be part of a name; drives are one letter; the first
    // ":\" ends the drive's part. At the end what is not mapped.
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"E:\\CONTENTS\\CLIP\\", "/media/card/CONTENTS/CLIP/"},
        {L"E:", "/media/card"},
        {L"R:\\CONTENTS", "/CONTENTS"},
        {L"E:x", "E:x"},
        {L"1:\\x", "1/x"},
        {L"/media/card 10:30:\\CONTENTS\\", "/media/card 10:30/CONTENTS/"},
        {L"/media/a\\b:\\CONTENTS", "/media/a\\b/CONTENTS"},
        {L"/a:\\b:\\c", "/a/b:/c"},
        {L"/\u0416\U0001F600", "/\u0416\U0001F600"},
        {L"F:\\CONTENTS", ""},
        {L":\\x", ""}};
    for (const auto& [path, posix] : rows) {
        EXPECT_EQ(PosixPath(path), posix);
    }
    EXPECT_EQ(PosixPath(CString(L"/etc/passwd\0.XML", 16)), "") << "it would be cut there";
    EXPECT_EQ(InterfaceRoot("/media/card///"), L"/media/card:");
    EXPECT_EQ(InterfaceRoot("///"), L"/:");
    EXPECT_EQ(PosixPath(InterfaceRoot("E") + L"\\x"), "./E/x") << "no drive";
    EXPECT_EQ(InterfaceRoot("/media/a:\\b"), L"") << "the form cannot say it";
}

TEST_F(PathText, AcceptsOnlyLettersAsDrives) {
    for (const char* argument :
         {"", "E", "=", "E=", "=/media", "EE=/media", "1=/x", "[=/x", "\xC3\x89=/media"}) {
        EXPECT_FALSE(MapDriveFromArgument(argument)) << argument;
    }
    EXPECT_TRUE(MapDriveFromArgument("e:=/media/a=b"));
    EXPECT_EQ(PosixPath(L"E:\\x"), "/media/a=b/x");
    EXPECT_TRUE(MapDrive(L"e:", "") && !IsDriveMapped(L'E'));
}

} // namespace
} // namespace nqp2

namespace nqp2::platform {
namespace {

using test::Operation;

TEST(CaseBlind, FindsTheRealSpelling) {
    const test::TempFolder folder;
    for (const char* name :
         {"Contents/Clip/0001AB.XML", "Contents/icon/a.bmp", "Contents/icon/A.BMP",
          "Contents/ICon/only here.bmp", "Contents/\xE9t\xE9", "root file", "LINK"}) {
        folder.Write(name);
    }
    ASSERT_EQ(symlink("nowhere", folder.Path("link").c_str()), 0);
    const std::pair<const char*, const char*> rows[] = {
        {"CONTENTS//CLIP///0001ab.xml", "Contents/Clip/0001AB.XML"},
        {"./contents/./clip/../CLIP", "./Contents/./Clip/../Clip"},
        {"CONTENTS/CLIP/", "Contents/Clip/"},
        {"ROOT FILE/", nullptr},                        // a trailing separator asks for a folder
        {"CONTENTS/ICON/A.BMP", "Contents/icon/A.BMP"}, // no exact folder: the one that has it
        {"CONTENTS/icon/A.bmp", "Contents/icon/A.BMP"}, // exact folder, first sorted file
        {"CONTENTS/ICON/a.bmp", "Contents/icon/a.bmp"}, // the exact file of several
        {"CONTENTS/ICON/ONLY HERE.BMP", "Contents/ICon/only here.bmp"},
        {"contents/icon/only here.bmp", nullptr}, // the exact folder wins, and has it not
        {"CONTENTS/\xE9T\xE9", "Contents/\xE9t\xE9"},
        {"link", "LINK"}}; // not the one that leads nowhere
    for (const auto& [name, expected] : rows) {
        const auto found = FindExisting(folder.Path(name));
        EXPECT_EQ(found, expected ? std::optional(folder.Path(expected)) : std::nullopt) << name;
    }
    CString endless(L'/', 100'000);
    endless.Replace(L"/", L"/CONTENTS");
    for (const std::string& path :
         {std::string(), folder.Path("root file") + '\0', folder.Path() + PosixPath(endless)}) {
        EXPECT_FALSE(FindExisting(path));
    }
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
    test::FaultyFileSystem m_files;
    ScopedFileSystem m_inPlace{m_files};
};

TEST_F(PlaceTest, FindsNamesInAnyLetterCase) {
    // Of three that differ in case only the exact one, else the first in sorted order. A name that
    // is no UTF-8 is compared by its bytes.
    const std::pair<std::string, std::string> rows[] = {
        {"0001ab.mxf", "0001AB.MXF"}, {"b.mxf", "b.mxf"},
        {"b.MXF", "B.MXF"},           {"SUB", "Sub"},
        {"\u00C4.MXF", "\u00E4.mxf"}, {"\xE9.MXF", "\xE9.mxf"},
        {"\xC9.MXF", "(none)"}};
    const Place listed = Video();
    ASSERT_TRUE(listed.Names().Status());
    for (const auto& [name, expected] : rows) {
        EXPECT_EQ(FoundIn(listed, name), expected) << name;
        EXPECT_EQ(FoundIn(Video(), name), expected) << name << " of a place that was not listed";
    }
    for (const std::string& name :
         {""s, "."s, ".."s, "b.mxf\0"s, "Sub/"s, "./b.mxf"s, "Sub/x"s, "Sub\\..\\b.mxf"s}) {
        EXPECT_EQ(FoundIn(listed, name), "(none)") << name;
        EXPECT_EQ(FoundIn(Video(), name), "(none)") << name;
        EXPECT_EQ(listed.Names().Find(name), nullptr) << name;
    }
}

TEST_F(PlaceTest, KeepsTheFolderAsWrittenAndKnowsTheRealOne) {
    const Place video = Place(m_root).Below(L"\\CONTENTS\\").Below(L"VIDEO");
    EXPECT_EQ(video.PathOf(L"none"), m_written + L"none");
    EXPECT_EQ(video.OnDisk(), m_real);
    EXPECT_EQ(Place(L"/:").OnDisk(), "/");
    IoStatus status;
    std::vector<FoundFile> found = video.List(L"SUB*", status);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].path, m_written + L"Sub");
    EXPECT_EQ(found[0].posixPath, m_real + "/Sub");
    EXPECT_TRUE(found[0].isFolder && found[0].pathIsSafe && !found[0].IsReadable());
    found = video.List(L"a*", status);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_FALSE(found[0].pathIsSafe || found[0].IsReadable()) << "its backslash leads elsewhere";
    EXPECT_EQ(FoundIn(SplitPath(m_written + L"0001ab.mxf").folder, "0001ab.mxf"), "0001AB.MXF");
    EXPECT_EQ(SplitPath(L"name").folder.OnDisk(), ".") << "the current folder";
    std::unique_ptr<Folder> folder;
    ASSERT_TRUE(Place(m_root).MakeBelow(L"\\CONTENTS\\CLIP", folder));
    EXPECT_EQ(folder->Path(), m_folder.Path("10:30/Contents/CLIP"));
    EXPECT_FALSE(Place(m_root).MakeBelow(L"CONTENTS\\..\\x", folder));
    EXPECT_FALSE(Place(m_root).MakeBelow(L"CONTENTS\\VIDEO\\b.mxf", folder));
}

TEST_F(PlaceTest, ListsEachFolderOnceAndAsksNoMoreThanItMust) {
    const Place exact = Place::At(m_real);
    EXPECT_TRUE(exact.Has(L"b.mxf") && exact.Has(L"B.mxf") && exact.Exists());
    EXPECT_EQ(m_files.Calls(), 2U) << "exact names are asked for, one call each";
    EXPECT_FALSE(exact.Has(L"none"));
    EXPECT_TRUE(exact.Has(L"b.MxF"));
    EXPECT_EQ(m_files.Calls(Operation::List), 1U);
    EXPECT_EQ(m_files.Calls(), 4U) << "the names answer from now on, also for copies";
    const Place card(m_root);
    for (int turn = 0; turn < 3; ++turn) {
        m_files.ResetCalls();
        const Place video = card.Below(L"CONTENTS\\VIDEO");
        EXPECT_TRUE(video.Names().Contains("B.Mxf") && video.Exists());
        EXPECT_FALSE(card.Below(L"CONTENTS\\AUDIO").Has(L"x"));
        EXPECT_TRUE(turn == 0 || m_files.Calls() == 0) << "what is below is kept too";
    }
    m_files.ResetCalls();
    m_files.Fail({.error = IoError::Device});
    EXPECT_FALSE(FindExisting(m_folder.Path("CONTENTS")));
    EXPECT_EQ(m_files.Calls(), 1U) << "the medium failed";
}

TEST_F(PlaceTest, TellsAFolderThatIsMissingFromOneThatCannotBeRead) {
    FoundFile found;
    std::unique_ptr<Folder> folder;
    for (const CString& path :
         {CString(), CString(L"Z:\\x"), m_root + L"\\none\\x", m_written + L"0001AB.MXF\\"}) {
        const Place place(path);
        for (const IoStatus& status : {place.Look(), place.Find(L"tmp", found),
                                       place.Names().Status(), place.Open(folder)}) {
            EXPECT_EQ(status.error, IoError::NotFound) << path;
        }
    }
    m_files.Fail({.error = IoError::Device, .operation = Operation::List, .keptEntries = 1});
    const Place cut = Place::At(m_real);
    EXPECT_EQ(cut.Names().Entries().size(), 1U) << "what came before the medium failed is kept";
    EXPECT_EQ(cut.Find(L"none", found).error, IoError::Device);
    m_files.Fail({.error = IoError::Denied});
    EXPECT_EQ(Video().Look().error, IoError::Denied);
}

TEST(RealPathsTest, CopiesOfManyThreadsAnswerAsOneAndReadAFolderOnce) {
    const test::TempFolder folder;
    std::vector<CString> asked;
    std::vector<std::string> answers;
    for (int clip = 10; clip < 60; ++clip) {
        // As recorded, in other letters on the disk, and missing.
        const std::string name = std::to_string(clip) + ".MXF";
        answers.push_back(folder.Write("VIDEO/" + name));
        answers.push_back(folder.Write("VIDEO/v" + name));
        answers.push_back(folder.Path("VIDEO/X" + name));
        for (const char* const start : {"", "V", "X"}) {
            asked.push_back(InterfaceRoot(folder.Path()) + L"\\VIDEO\\" +
                            TextFromNameBytes(start + name));
        }
    }
    test::FaultyFileSystem files;
    const ScopedFileSystem inPlace{files};
    const RealPaths first;
    std::vector<std::vector<std::string>> found(4);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < found.size(); ++thread) {
        threads.emplace_back([&, thread] {
            RealPaths paths(first);
            if (thread % 2 == 1) {
                paths.ReadFolderOf(asked[0]);
            }
            for (const CString& path : asked) {
                found[thread].push_back(paths.Find(path));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::vector<std::string>& ofThread : found) {
        EXPECT_EQ(ofThread, answers);
    }
    EXPECT_EQ(files.Calls(Operation::List), 1 + found.size())
        << "for all, and by each place for what has other letters";
}

TEST(MatchesPatternTest, TakesPatternsWithoutRegardToCaseAndQuickly) {
    const std::tuple<const wchar_t*, const wchar_t*, bool> rows[] = {
        {L"01.xml", L"*.XML", true}, {L".XML", L"*.XML", true},    {L"name", L"*.*", true},
        {L"", L"*", true},           {L"abcabd", L"*AB?", true},   {L"aXbXc", L"a*b*c", true},
        {L"[a].c", L"[A].*", true},  {L"\u00E4", L"\u00C4", true}, {L"\U0001F600", L"?", true},
        {L"x.ab", L"*.A", false},    {L"XML", L"*.XML", false},    {L"name", L"*.", false},
        {L"", L"?", false},          {L"abc", L"a?", false},       {L"aXbX", L"a*b*c", false}};
    for (const auto& [name, pattern, fits] : rows) {
        EXPECT_EQ(MatchesPattern(name, pattern), fits) << CString(name) << CString(pattern);
    }
    CString slow(L'a', 100);
    slow.Replace(L"a", L"*a");
    EXPECT_FALSE(MatchesPattern(std::wstring(20'000, L'a'), (slow + L"b").View()));
}

} // namespace
} // namespace nqp2::platform
