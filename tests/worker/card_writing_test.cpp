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

std::string Delete(const test::CardBuilder& card, const CString& name) {
    return ErrorOf([&] { DeleteClip(name, card.Root()); });
}
std::string Icon(const test::CardBuilder& card, const CString& name, const std::string& pixels,
                 const SIZE& size) {
    return ErrorOf([&] { WriteIcon(card.Root(), name, pixels, size); });
}

TEST(ClipDelete, AClipThatStaysVisibleStaysWhole) {
    const test::CardBuilder card;
    AddWholeClip(card, "0001AC");
    const auto others = FilesBelow(card.Folder().Path());
    AddWholeClip(card, "0001AB");
    const auto before = FilesBelow(card.Folder().Path());
    for (const wchar_t* name : {L"0001A", L"../CLIP/0001AC", L""}) {
        EXPECT_NE(Delete(card, name), "");
    }
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.Fail({IoError::ReadOnly, Operation::RemoveFile, ".XML", 0, 1});
    EXPECT_NE(Delete(card, L"0001AB"), "");
    EXPECT_EQ(FilesBelow(card.Folder().Path()), before);
    files.Fail({IoError::ReadOnly, Operation::RemoveFile, ".BIN", 0, 1});
    EXPECT_THAT(Delete(card, L"0001ab"), HasSubstr("0001AB.BIN"));
    EXPECT_EQ(FilesBelow(card.Folder().Path()).size(), others.size() + 1);
    EXPECT_EQ(Delete(card, L"0001AB"), "") << "what was left behind";
    EXPECT_EQ(FilesBelow(card.Folder().Path()), others);
}

/// Its bytes: see the command line's tests.
TEST(IconBitmap, TakesThePlaceOfTheOldOneWhenThePixelsFitTheSize) {
    const std::pair<std::size_t, SIZE> cases[] = {
        {11, {2, 2}},  {13, {2, 2}},         {0, {0, 0}},    {12, {-2, -2}},
        {12, {2, -2}}, {0, {0x40000000, 4}}, {12, {5000, 1}}};
    const test::CardBuilder card;
    card.AddFile("ICON/0001AB.bmp", "an old icon");
    const std::string good(12, 'x');
    EXPECT_THAT(Icon(card, L"0001AB", good, {2, 2}), HasSubstr("no clip 0001AB"));
    card.AddClip("0001AB");
    const auto before = FilesBelow(card.Folder().Path());
    for (const auto& [bytes, size] : cases) {
        EXPECT_NE(Icon(card, L"0001AB", std::string(bytes, 'x'), size), "") << bytes;
    }
    EXPECT_NE(Icon(card, L"../0001AB", good, {2, 2}), "");
    EXPECT_EQ(FilesBelow(card.Folder().Path()), before);
    EXPECT_EQ(Icon(card, L"0001AB", good, {2, 2}), "");
    EXPECT_EQ(FilesBelow(card.Folder().Path()).at("CONTENTS/ICON/0001AB.bmp").size(), 70U);
}

TEST(FreeClipName, CountsUpThroughTheNumbers) {
    ClipNames names;
    names.Take(L"0005ab");
    for (const auto& [wanted, free] : std::map<CString, CString>{{L"0001AB", L"0002AB"},
                                                                 {L"9999zz", L"0001zz"},
                                                                 {L"holiday", L"0001AA"},
                                                                 {L"0004AB", L"0006AB"}}) {
        EXPECT_EQ(names.FindFree(wanted), free) << wanted;
    }
    for (int number = 1; number <= 9999; ++number) {
        names.Take(Name((std::to_string(10000 + number).substr(1) + "AB").c_str()));
    }
    EXPECT_NE(ErrorOf([&] { static_cast<void>(names.FindFree(L"0001AB")); }), "");
}

} // namespace
} // namespace nqp2::worker
