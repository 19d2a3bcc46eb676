// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/video_format.h"

#include "avchd/codings.h"
#include "media/rates.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace nqp2::avchd {
namespace {

struct Format {
    Raster raster;
    bool interlaced;
};

/// By code, from 0.
constexpr Format kFormats[] = {
    {{0, 0}, false},       {{720, 480}, true},   {{720, 576}, true},
    {{720, 480}, false},   {{1920, 1080}, true}, {{1280, 720}, false},
    {{1920, 1080}, false}, {{720, 576}, false},  {{3840, 2160}, false},
};

struct CodedRate {
    std::uint8_t code;
    const wchar_t* text;
};

constexpr const wchar_t* k25p = L"25p";
constexpr std::uint8_t kCode25 = 3;
constexpr std::uint8_t kCode50 = 6;
constexpr CodedRate kRates[] = {
    {1, L"23.98p"}, {2, L"24p"},       {kCode25, L"50i"},
    {4, L"29.97p"}, {kCode50, L"50p"}, {7, L"59.94p"},
};

constexpr std::int64_t kTicksASecond = 45000;
constexpr std::int32_t kLines720 = 720;

const Format& FormatOf(std::uint8_t code) {
    return kFormats[code < std::size(kFormats) ? code : 0];
}

bool IsHighDefinition(const Raster& raster) {
    return raster.lines >= kLines720;
}

} // namespace

bool IsVideoCoding(std::uint8_t codingType) {
    const Coding* const coding = CodingOf(codingType);
    return coding != nullptr && coding->kind == StreamKind::Video;
}

VideoStream ReadVideoAttributes(ByteReader& attributes) {
    VideoStream video;
    video.codingType = attributes.U8();
    const unsigned formatAndRate = attributes.U8();
    if (!attributes.IsGood() || !IsVideoCoding(video.codingType)) {
        return {};
    }
    video.format = static_cast<std::uint8_t>(formatAndRate >> 4U);
    video.rateCode = static_cast<std::uint8_t>(formatAndRate & 0x0FU);
    return video;
}

Raster RasterOf(std::uint8_t format) {
    return FormatOf(format).raster;
}

bool IsInterlaced(std::uint8_t format) {
    return FormatOf(format).interlaced;
}

bool Is25p(const VideoStream& video, std::uint8_t pulldown) {
    const Format& format = FormatOf(video.format);
    if (format.raster.lines == 0) {
        return false;
    }
    if (video.rateCode == kCode25) {
        return !format.interlaced || pulldown == kPulldown22;
    }
    return video.rateCode == kCode50 && !format.interlaced && IsHighDefinition(format.raster) &&
           pulldown == kPulldown22;
}

const FrameRate* RateOf(std::uint8_t rateCode, bool is25p) {
    if (is25p) {
        return media::FindRate(k25p);
    }
    const auto* const found =
        std::find_if(std::begin(kRates), std::end(kRates),
                     [rateCode](const CodedRate& row) { return row.code == rateCode; });
    return found == std::end(kRates) ? nullptr : media::FindRate(found->text);
}

std::int32_t FramesBetween(std::uint32_t in, std::uint32_t out, const FrameRate& rate) {
    const std::uint32_t ticks = out - in; // also right when the clock starts anew in between
    // Below 2^50, and the quotient below 6 million.
    const std::int64_t frames = std::int64_t{ticks} * rate.frames;
    const std::int64_t unit = kTicksASecond * rate.seconds;
    return static_cast<std::int32_t>((2 * frames + unit) / (2 * unit));
}

std::int32_t AddFrames(std::int32_t left, std::int32_t right) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(std::int64_t{left} + right, kMost));
}

const wchar_t* FormatText(const Raster& raster, bool interlaced, const FrameRate* rate) {
    constexpr std::int32_t kFullPixels = 1920;
    constexpr std::int32_t kSlowest50 = 30;
    if (raster.lines == kLines720) {
        const bool fast = rate != nullptr && rate->frames > kSlowest50 * rate->seconds;
        return fast ? L"AVCHD_1280_720_50p" : L"AVCHD_1280_720_25p";
    }
    if (raster.pixels >= kFullPixels) {
        return interlaced ? L"AVCHD_1920_1080_50i" : L"AVCHD_1920_1080_25p";
    }
    return interlaced ? L"AVCHD_1440_1080_50i" : L"AVCHD_1440_1080_25p";
}

} // namespace nqp2::avchd
