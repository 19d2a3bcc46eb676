// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/support/print_text.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/card_requests.h"
#include "worker/clip_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using platform::IoError;
using test::Operation;
using testing::HasSubstr;
using namespace std::string_literals;

std::string Delete(const test::CardBuilder& card, const CString& name) {
    return ErrorOf([&] { DeleteClip(name, card.Root()); });
}
std::string Icon(const test::CardBuilder& card, const CString& name, const std::string& pixels,
                 const SIZE& size) {
    return ErrorOf([&] { WriteIcon(card.Root(), name, pixels, size); });
}

TEST(ClipDelete, RemovesTheClipsFilesAlone) {
    const test::CardBuilder card;
    AddWholeClip(card, "0001AB");
    const auto own = FilesBelow(card.Folder().Path()).size();
    AddWholeClip(card, "0001AC");
    const auto all = FilesBelow(card.Folder().Path()).size();
    EXPECT_EQ(Delete(card, L"0001ab"), "");
    EXPECT_EQ(FilesBelow(card.Folder().Path()).size(), all - own);
    EXPECT_THAT(Delete(card, L"0001AB"), HasSubstr("no clip 0001AB"));
    EXPECT_NE(Delete(card, L"../CLIP/0001AC"), "");
    EXPECT_NE(Delete(card, L""), "");
    EXPECT_EQ(FilesBelow(card.Folder().Path()).size(), all - own);
}

TEST(ClipDelete, AClipThatStaysVisibleStaysWhole) {
    const test::CardBuilder card;
    AddWholeClip(card, "0001AB");
    const auto before = FilesBelow(card.Folder().Path());
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.Fail({IoError::ReadOnly, Operation::RemoveFile, ".XML", 0, 1});
    EXPECT_NE(Delete(card, L"0001AB"), "");
    EXPECT_EQ(FilesBelow(card.Folder().Path()), before);
    files.Fail({IoError::ReadOnly, Operation::RemoveFile, ".BIN", 0, 1});
    EXPECT_THAT(Delete(card, L"0001AB"), HasSubstr("0001AB.BIN"));
    EXPECT_EQ(FilesBelow(card.Folder().Path()).size(), 1U);
    EXPECT_EQ(Delete(card, L"0001AB"), "") << "what was left behind";
}

TEST(IconBitmap, IsAWholeBitmapFile) {
    const test::CardBuilder card;
    const std::string pixels = "bgrBGR"
                               "123456"s;
    card.AddFile("ICON/0001AB.bmp", "an old icon");
    EXPECT_THAT(Icon(card, L"0001AB", pixels, {2, 2}), HasSubstr("no clip 0001AB"));
    card.AddClip("0001AB");
    ASSERT_EQ(Icon(card, L"0001AB", pixels, {2, 2}), "");
    const std::string expected =
        "BM\x46\0\0\0\0\0\0\0\x36\0\0\0"s
        "\x28\0\0\0\x02\0\0\0\x02\0\0\0\x01\0\x18\0\0\0\0\0\x10\0\0\0\x13\x0b\0\0\x13\x0b\0\0\0\0\0\0\0\0\0\0"s
        "bgrBGR\0\0"
        "123456\0\0"s;
    const auto files = FilesBelow(card.Folder().Path());
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files.at("CONTENTS/ICON/0001AB.bmp"), expected);
}

TEST(IconBitmap, RefusesPixelsThatDoNotFitTheSize) {
    struct Case {
        std::size_t bytes;
        SIZE size;
    };
    const Case cases[] = {{11, {2, 2}},  {13, {2, 2}},         {0, {0, 0}},    {12, {-2, -2}},
                          {12, {2, -2}}, {0, {0x40000000, 4}}, {12, {5000, 1}}};
    const test::CardBuilder card;
    for (const Case& each : cases) {
        EXPECT_NE(Icon(card, L"0001AB", std::string(each.bytes, 'x'), each.size), "")
            << each.size.cx << " x " << each.size.cy;
    }
    EXPECT_NE(Icon(card, L"../0001AB", std::string(12, 'x'), {2, 2}), "");
    EXPECT_TRUE(FilesBelow(card.Folder().Path()).empty());
}

TEST(FreeClipName, CountsUpThroughTheNumbers) {
    struct Case {
        const wchar_t* wanted;
        const wchar_t* free;
    };
    const Case cases[] = {{L"0001AB", L"0002AB"}, {L"9999zz", L"0001zz"}, {L"holiday", L"0001AA"},
                          {L"12345", L"0001AA"},  {L"0004AB", L"0006AB"}, {L"00x1AB", L"0001AA"}};
    ClipNames names;
    names.Take(L"0005ab");
    for (const Case& each : cases) {
        EXPECT_EQ(names.FindFree(each.wanted), each.free) << CString(each.wanted);
    }
    for (int number = 1; number <= 9999; ++number) {
        CString name;
        name.Format(L"%04dAB", number);
        names.Take(name);
    }
    EXPECT_NE(ErrorOf([&] { static_cast<void>(names.FindFree(L"0001AB")); }), "");
}

/// What the machine has decides; either way the answer is whole.
TEST(VolumeSerial, IsANumberOrAReason) {
    const test::TempFolder folder;
    const auto error = [](const CString& path, CString& serial) {
        return ErrorOf([&] { serial = FindVolumeSerial(path); });
    };
    CString serial;
    const std::string told = error(InterfaceRoot(folder.Path()), serial);
    EXPECT_NE(serial.IsEmpty(), told.empty());
    EXPECT_THAT(error(L"/proc:", serial), HasSubstr("no device"));
    EXPECT_THAT(error(L"/no/such/folder", serial), HasSubstr("nothing at"));
}

} // namespace
} // namespace nqp2::worker
