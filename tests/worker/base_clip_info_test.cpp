// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/card_requests.h"

#include "tests/support/print_text.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/media_file.h"

#include <ctime>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

bool GoesOn() {
    return true;
}

std::string Describe(const CString& path, NQP2BaseClipInfo& info) {
    return ErrorOf([&] { info = DescribeClip(path, GoesOn, info); });
}
std::string ErrorOfReading(const std::string& path, const MediaLimits& limits = {},
                           const std::function<bool()>& goesOn = GoesOn) {
    return ErrorOf([&] { static_cast<void>(ReadMediaFile(path, goesOn, limits)); });
}

/// With sound and a timecode, which the files of the command line's tests lack.
TEST(BaseClipInfo, DescribesCameraFiles) {
    const test::TempFolder folder;
    const std::string path = folder.Path("00002.MOV");
    ASSERT_TRUE(WriteMovie(path, "mov", kDv25Pal, 10));
    NQP2BaseClipInfo info;
    info.texts.Add(L"from an earlier call");
    const CString asked = Name(path.c_str());
    ASSERT_EQ(Describe(asked, info), "");
    EXPECT_EQ(info.clipText1, L"00002");
    EXPECT_EQ(info.clipText3, L"A walk");
    EXPECT_EQ(info.codec, L"DVCP");
    EXPECT_EQ(info.value2, 10);
    EXPECT_EQ(info.value3, (62 * 60 + 3) * 25 + 4);
    EXPECT_EQ(info.value4, 576 << 16 | 720);
    ASSERT_EQ(info.texts.GetSize(), 2);
    EXPECT_EQ(info.texts[1], asked);
    NQP2BaseClipInfo again;
    again.clipText1 = L"given name";
    again.clipText2 = L"given date";
    ASSERT_EQ(Describe(asked, again), "");
    EXPECT_EQ(again.identifier, info.identifier);
    EXPECT_EQ(again.clipText1, L"given name");
    EXPECT_EQ(again.clipText2, L"given date");
}

TEST(BaseClipInfo, DescribesP2ClipsByTheirMetadata) {
    const test::CardBuilder card;
    AddWholeClip(
        card, "0001AB", 1,
        {{"GlobalClipID", "060A2B340101010501010D431300000011111111111111111111111111111111"},
         {"Duration", "250"},
         {"EssenceList/Video/Codec", "DV50_422"},
         {"EssenceList/Video/FrameRate", "59.94i"},
         {"EssenceList/Video/FrameRate@DropFrameFlag", "false"},
         {"EssenceList/Video/StartTimecode", "00:00:01:00"},
         {"EssenceList/Video/AspectRatio", "16:9"},
         {"ClipMetadata/UserClipName", "Interview"}});
    NQP2BaseClipInfo info;
    ASSERT_EQ(Describe(card.Contents() + L"CLIP\\0001ab.xml", info), "");
    EXPECT_EQ(info.clipText1, L"0001AB");
    EXPECT_EQ(info.clipText3, L"Interview");
    EXPECT_EQ(info.codec, L"DV50_422");
    EXPECT_TRUE(info.value1 == 29970 && info.value2 == 250 && info.value3 == 30);
    EXPECT_EQ(info.text1, L"59.94i");
    EXPECT_EQ(info.text2, L"16:9");
    EXPECT_EQ(info.text3, card.Contents() + L"VIDEO\\0001AB.MXF");
    EXPECT_EQ(info.texts.GetSize(), 1) << "the reader leaves the last channel out";
    EXPECT_EQ(info.identifier.Data1, 0x11111111U);
}

TEST(BaseClipInfo, P2ClipsWithoutIdentifierAreToldApartByTheirVideo) {
    const test::CardBuilder card;
    AddWholeClip(card, "0001AB", 1);
    AddWholeClip(card, "0002AB", 1, {{"Duration", "5"}});
    AddWholeClip(card, "0003AB", 2);
    const auto identifier = [&](const CString& name) {
        NQP2BaseClipInfo info;
        EXPECT_EQ(Describe(card.Contents() + L"CLIP\\" + name + L".XML", info), "");
        return info.identifier;
    };
    EXPECT_EQ(identifier(L"0001AB"), identifier(L"0002AB"));
    EXPECT_NE(identifier(L"0001AB"), identifier(L"0003AB"));
}

TEST(BaseClipInfo, FilesThatAreNoneFailWithAReason) {
    const test::TempFolder folder;
    const std::string movie = folder.Path("whole.mov");
    ASSERT_TRUE(WriteMovie(movie, "mov", kDv25Pal, 2));
    const std::string bytes = FilesBelow(folder.Path()).at("whole.mov");
    for (const std::string& path :
         {folder.MakeFolder("folder.mov"), folder.Write("empty.mov"),
          folder.Write("text.avi", "no movie at all"),
          folder.Write("cut.mov", bytes.substr(0, 1000)), folder.Write("text.xml", "<a/>"),
          folder.Write("list.m3u8", "#EXTM3U\n#EXTINF:1,\nfile:" + movie + "\n"), "concat:" + movie,
          std::string("relative.mov")}) {
        NQP2BaseClipInfo info;
        EXPECT_NE(Describe(Name(path.c_str()), info), "") << path;
    }
}

/// What libavformat would search to its end: 200 GiB of zeros.
TEST(BaseClipInfo, NoFileHoldsTheWorkerUp) {
    constexpr std::uintmax_t kEndless = std::uintmax_t{200} << 30U;
    const test::TempFolder folder;
    for (const char* const container : {"avi", "mov", "mxf"}) {
        const std::string path = folder.Path(std::string("a.") + container);
        ASSERT_TRUE(WriteMovie(path, container, kDv50Pal, 2));
        for (const std::uintmax_t begun : {60000U, 2000U, 200U}) {
            std::filesystem::resize_file(path, begun);
            std::filesystem::resize_file(path, kEndless);
            const std::clock_t from = std::clock();
            static_cast<void>(ErrorOfReading(path, {.bytes = 4U << 20U}));
            EXPECT_LT(std::clock() - from, 5 * CLOCKS_PER_SEC) << path << " " << begun;
        }
    }
    const std::string zeros = folder.Path("a.avi");
    NQP2BaseClipInfo info;
    EXPECT_THAT(Describe(Name(zeros.c_str()), info), HasSubstr("within"));
    EXPECT_TRUE(info.clipText1.IsEmpty() && info.text3.IsEmpty()) << "it says nothing";
    EXPECT_THAT(ErrorOfReading(zeros, {.processorTime = {}}), HasSubstr("within"));
    int asked = 0;
    EXPECT_EQ(ErrorOfReading(zeros, {}, [&] { return ++asked < 9; }), "Cancelled.");
}

} // namespace
} // namespace nqp2::worker
