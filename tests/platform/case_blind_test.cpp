// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/case_blind.h"

#include "tests/support/faulty_file_system.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <unistd.h>

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
        {"ROOT FILE", "root file"},
        {"ROOT FILE/", "(none)"}, // a trailing separator asks for a folder
        {"root file/x", "(none)"},
        {"CONTENTS/CLIP/none.xml", "(none)"},
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

TEST_F(CaseBlind, AsksOnceForAnExactName) {
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    EXPECT_TRUE(PathExists(m_folder.Path("Contents/Clip/0001AB.XML")));
    EXPECT_EQ(files.Calls(), 1U);
}

TEST_F(CaseBlind, ListsNoFolderAboveAMissingName) {
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    EXPECT_FALSE(PathExists(m_folder.Path("Contents/Clip/none")));
    EXPECT_EQ(files.Calls(Operation::List), 1U);
    EXPECT_LE(files.Calls(Operation::Stat), 3U);
}

TEST_F(CaseBlind, GivesUpAtOnceWhenTheMediumFails) {
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.Fail({.error = IoError::Device});
    EXPECT_FALSE(PathExists(m_folder.Path("Contents/CLIP")));
    EXPECT_EQ(files.Calls(), 1U);
}

TEST_F(CaseBlind, SurvivesAFolderThatVanishesWhileSearching) {
    test::FaultyFileSystem files;
    const ScopedFileSystem scope(files);
    files.SetHook([this](Operation operation, const std::string&) {
        if (operation == Operation::List) {
            std::filesystem::remove_all(m_folder.Path());
        }
    });
    EXPECT_FALSE(PathExists(m_folder.Path("CONTENTS/CLIP/0001AB.XML")));
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

} // namespace
} // namespace nqp2::platform
