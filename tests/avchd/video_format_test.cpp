// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/recorded_moment.h"
#include "avchd/video_format.h"
#include "tests/avchd/avchd_bytes.h"
#include "tests/support/print_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace nqp2::avchd {
namespace {

TEST(RecordedMomentTest, DatesAreBinaryCodedAndPossible) {
    const auto date = DecodeDate(test::BytesOf(test::kDate));
    ASSERT_TRUE(date);
    EXPECT_EQ(date->year, 2011);
    EXPECT_EQ(date->month, 1);
    EXPECT_EQ(date->day, 28);
    EXPECT_EQ(date->hour, 13);
    EXPECT_EQ(date->minute, 45);
    EXPECT_EQ(date->second, 7);
    const std::string impossible[] = {
        std::string("\x20\x11\x02\x29\x13\x45\x07"),    // no leap year
        std::string("\x20\x11\x13\x01\x13\x45\x07"),    // month 13
        std::string("\x20\x1A\x01\x28\x13\x45\x07"),    // no decimal
        std::string("\x20\x11\x01\x28\x24\x00\x00", 7), // hour 24
        std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),    test::Zeros(7), test::kDate.substr(1)};
    for (const std::string& bytes : impossible) {
        EXPECT_FALSE(DecodeDate(test::BytesOf(bytes))) << testing::PrintToString(bytes);
    }
    EXPECT_TRUE(DecodeDate(test::BytesOf("\x20\x12\x02\x29\x23\x59\x59"))) << "leap year";
}

TEST(RecordedMomentTest, TimecodesComeFramesFirst) {
    const auto drop = DecodeTimecode(test::BytesOf("\x50\x03\x02\x01"));
    ASSERT_TRUE(drop);
    EXPECT_TRUE(drop->dropFrame);
    EXPECT_EQ(drop->timecode.hours, 1);
    EXPECT_EQ(drop->timecode.minutes, 2);
    EXPECT_EQ(drop->timecode.seconds, 3);
    EXPECT_EQ(drop->timecode.frames, 10);
    const auto plain = DecodeTimecode(test::BytesOf(std::string("\xA9\xD9\xD9\xE3", 4)));
    ASSERT_TRUE(plain) << "flags in the upper bits of each byte";
    EXPECT_FALSE(plain->dropFrame);
    EXPECT_EQ(plain->timecode.hours, 23);
    EXPECT_EQ(plain->timecode.frames, 29);
    for (const char* const none : {"\xFF\xFF\xFF\xFF", "\x30\x01\x01\x01", "\x01\x60\x01\x01",
                                   "\x01\x01\x01\x24", "\x01\x01\x01"}) {
        EXPECT_FALSE(DecodeTimecode(test::BytesOf(none)));
    }
}

struct FrameCase {
    std::uint32_t in;
    std::uint32_t out;
    unsigned rateCode;
    std::int32_t frames;
    const char* why;
};

TEST(VideoFormatTest, FramesAreRoundedNeverCutOff) {
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    constexpr FrameCase kCases[] = {
        {38700, 59244300, 3, 32892, "a real camera's item"},
        {0, 1501, 4, 1, "half a tick short of a frame"},
        {0, 1502, 4, 1, "half a tick over"},
        {0, 750, 7, 1, "a frame of 750.75 ticks"},
        {0, 749, 4, 0, "less than half a frame"},
        {0, 1876, 1, 1, "1876.875 ticks"},
        {0, 1875, 2, 1, ""},
        {0, 900, 6, 1, ""},
        {0, kLast, 7, 5720902, "26 hours"},
        {kLast, 0, 3, 0, "no clock that ran over"},
        {5, 5, 3, 0, "empty"},
    };
    for (const FrameCase& each : kCases) {
        const FrameRate* rate = RateOf(static_cast<std::uint8_t>(each.rateCode), false);
        ASSERT_NE(rate, nullptr);
        EXPECT_EQ(FramesBetween(each.in, each.out, *rate), each.frames) << each.why;
    }
    EXPECT_EQ(AddFrames(std::numeric_limits<std::int32_t>::max(), 1),
              std::numeric_limits<std::int32_t>::max());
}

TEST(VideoFormatTest, RatesHaveOneTextForBothScans) {
    const std::pair<unsigned, const wchar_t*> expected[] = {
        {1, L"23.98p"}, {2, L"24p"}, {3, L"50i"}, {4, L"29.97p"}, {6, L"50p"}, {7, L"59.94p"}};
    for (const auto& [code, text] : expected) {
        EXPECT_EQ(CString(RateOf(static_cast<std::uint8_t>(code), false)->text), text);
    }
    EXPECT_EQ(CString(RateOf(6, true)->text), L"25p") << "25p goes before the code";
    for (const unsigned code : {0U, 5U, 8U, 15U}) {
        EXPECT_EQ(RateOf(static_cast<std::uint8_t>(code), false), nullptr);
    }
}

TEST(VideoFormatTest, TellsTwentyFiveProgressiveFromFiftyInterlaced) {
    struct Case {
        unsigned format;
        unsigned rate;
        unsigned pulldown;
        bool is25p;
    };
    constexpr Case kCases[] = {
        {4, 3, 0, false}, {4, 3, 2, false}, {4, 3, 1, true},  {2, 3, 1, true},  {2, 3, 0, false},
        {6, 3, 0, true},  {5, 3, 2, true},  {7, 3, 0, true},  {3, 3, 0, true},  {5, 6, 1, true},
        {6, 6, 1, true},  {6, 6, 0, false}, {5, 6, 2, false}, {7, 6, 1, false}, {4, 6, 1, false},
        {4, 4, 1, false}, {0, 3, 1, false}, {9, 3, 1, false},
    };
    for (const Case& each : kCases) {
        VideoStream video;
        video.format = static_cast<std::uint8_t>(each.format);
        video.rateCode = static_cast<std::uint8_t>(each.rate);
        EXPECT_EQ(Is25p(video, static_cast<std::uint8_t>(each.pulldown)), each.is25p)
            << each.format << ' ' << each.rate << ' ' << each.pulldown;
    }
}

TEST(VideoFormatTest, EveryRasterHasAFormatText) {
    struct Case {
        Raster raster;
        bool interlaced;
        unsigned rate;
        const wchar_t* text;
    };
    const Case cases[] = {
        {{1920, 1080}, true, 3, L"AVCHD_1920_1080_50i"},
        {{1440, 1080}, true, 4, L"AVCHD_1440_1080_50i"},
        {{1440, 1080}, false, 3, L"AVCHD_1440_1080_25p"},
        {{1920, 1080}, false, 7, L"AVCHD_1920_1080_25p"},
        {{1280, 720}, false, 7, L"AVCHD_1280_720_50p"},
        {{1280, 720}, false, 4, L"AVCHD_1280_720_25p"},
        {{1280, 720}, false, 5, L"AVCHD_1280_720_25p"},
        {{3840, 2160}, false, 3, L"AVCHD_1920_1080_25p"},
        {{720, 576}, true, 3, L"AVCHD_1440_1080_50i"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(CString(FormatText(each.raster, each.interlaced,
                                     RateOf(static_cast<std::uint8_t>(each.rate), false))),
                  each.text);
    }
}

} // namespace
} // namespace nqp2::avchd
