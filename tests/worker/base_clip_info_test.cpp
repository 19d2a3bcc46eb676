// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/card_requests.h"

#include "tests/support/print_text.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/base/media_file.h"

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

TEST(BaseClipInfo, FilesThatAreNoneFailWithAReason) {
    const test::TempFolder folder;
    folder.MakeFolder("CONTENTS/CLIP");
    RecordingParameters parameters;
    parameters.cardRoot = InterfaceRoot(folder.Path());
    parameters.startTimecode = 93'079;
    ASSERT_EQ(Record(parameters, EncodePictures(kDv25Pal, 2)), "");
    const std::string movie = folder.Path("CONTENTS/VIDEO/0001AA.MXF");
    const std::string bytes = FilesBelow(folder.Path()).at("CONTENTS/VIDEO/0001AA.MXF");
    NQP2BaseClipInfo whole;
    EXPECT_EQ(Describe(Name(movie.c_str()), whole), "");
    EXPECT_EQ(whole.value3, 93'079) << "its first frame";
    for (const std::string& path :
         {folder.MakeFolder("folder.mov"), folder.Write("empty.mov"),
          folder.Write("text.avi", "no movie at all"),
          folder.Write("cut.mxf", bytes.substr(0, 1000)), folder.Write("text.xml", "<a/>"),
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
    const std::map<const char*, const char*> beginnings = {
        {"a.avi", "RIFFsizeAVI LISTsizemovi"},
        {"a.mov", "sizemoovsizemvhd"},
        {"a.mxf", "\x06\x0E\x2B\x34\2\5\1\1\r\1\2\1\1\2"}};
    for (const auto& [name, beginning] : beginnings) {
        const std::string path = folder.Write(name, beginning);
        std::filesystem::resize_file(path, kEndless);
        const std::clock_t from = std::clock();
        static_cast<void>(ErrorOfReading(path, {.bytes = 4U << 20U}));
        EXPECT_LT(std::clock() - from, 5 * CLOCKS_PER_SEC) << path;
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
