// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/PathText.h"

#include "platform/DriveMap.h"
#include "platform/file_system.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>
#include <string>
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
    struct Row {
        const wchar_t* path;
        const char* posix;
    };
    const Row rows[] = {
        {L"E:\\CONTENTS\\CLIP\\", "/media/card/CONTENTS/CLIP/"},
        {L"e:\\x", "/media/card/x"},
        {L"E:", "/media/card"},
        {L"E:\\", "/media/card/"},
        {L"E:\\\\CONTENTS\\", "/media/card//CONTENTS/"},
        {L"R:\\CONTENTS", "/CONTENTS"}, // mapped to the root: no doubled separator
        {L"R:", "/"},
        {L"F:\\CONTENTS", ""}, // not mapped
        {L"F:", ""},
        {L":", ""},
        {L":\\x", ""},
        {L"E:x", "E:x"}, // a colon inside a name
        {L"/media/card:\\CONTENTS\\", "/media/card/CONTENTS/"},
        {L"/media/card/:\\CONTENTS", "/media/card/CONTENTS"},
        {L"/media/card:", "/media/card"},
        {L"/:\\CONTENTS", "/CONTENTS"},
        {L"card:\\x", "card/x"},
        {L"1:\\x", "1/x"}, // a single element, but no letter
        {L"/media/card 10:30/x\\CONTENTS\\", "/media/card 10:30/x/CONTENTS/"},
        {L"/media/card 10:30:\\CONTENTS\\", "/media/card 10:30/CONTENTS/"},
        {L"/media/a\\b:\\CONTENTS", "/media/a\\b/CONTENTS"}, // the folder's own backslash
        {L"/a:\\b:\\c", "/a/b:/c"},                          // the first one ends the drive part
        {L"/media/card/CONTENTS", "/media/card/CONTENTS"},
        {L"a\\b", "a/b"},
        {L"", ""},
        {L"/\u0416\U0001F600", "/\u0416\U0001F600"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(PosixPath(row.path), row.posix);
    }
}

TEST_F(PathText, NeverCutsAPathAtAZeroElement) {
    EXPECT_EQ(PosixPath(CString(std::wstring_view(L"/etc/passwd\0.XML", 16))), "");
    EXPECT_EQ(PosixPath(CString(std::wstring_view(L"E:\\\0", 4))), "");
}

TEST_F(PathText, MakesRootsThatNameTheSameFolder) {
    const std::string folders[] = {
        "/media/card",
        "/",
        "card",
        "/media/card 10:30",
        "/media/ends with colon:",
        "/media/two::",
        "E:",
        "/media/a\\b",
        "/media/ends with backslash\\",
        "/media/\xD0\x96",
        "/media/caf\xE9",               // Latin-1
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
}

TEST_F(PathText, ForgetsADriveThatIsUnmapped) {
    EXPECT_TRUE(MapDrive(L"e:", ""));
    EXPECT_FALSE(IsDriveMapped(L'E'));
    EXPECT_EQ(PosixPath(L"E:\\x"), "");
}

TEST_F(PathText, ReachesFilesWhoseNamesAreNoUtf8) {
    const test::TempFolder folder;
    folder.Write("caf\xE9/\xFF.XML", "content");
    const CString root = InterfaceRoot(folder.Path("caf\xE9"));
    std::vector<platform::FolderEntry> entries;
    ASSERT_TRUE(platform::Files().List(PosixPath(root), entries));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].name, "\xFF.XML");
}

} // namespace
} // namespace nqp2
