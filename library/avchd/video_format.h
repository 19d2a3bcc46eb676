// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/FrameRate.h"

#include <cstdint>

/// The codes by which playlists and clip information describe video, and what follows from them.
namespace nqp2::avchd {

/// A video stream in the format's own codes.
struct VideoStream {
    std::uint16_t pid = 0;
    std::uint8_t codingType = 0;
    std::uint8_t format = 0; ///< 1 480i, 2 576i, 3 480p, 4 1080i, 5 720p, 6 1080p, 7 576p, 8 2160p
    std::uint8_t rateCode = 0; ///< 1 to 4, 6, 7; others are undefined
    std::uint8_t aspect = 0;   ///< 2 4:3, 3 16:9; playlists do not tell
};

inline constexpr std::uint8_t kAvcCoding = 0x1B;

/// Whether the coding type is one of video.
bool IsVideoCoding(std::uint8_t codingType);

/// How pictures were spread over the carrier's fields or frames; recorded beside each shot.
inline constexpr std::uint8_t kPulldown22 = 1;

struct Raster {
    std::int32_t pixels = 0;
    std::int32_t lines = 0;
};

/// The raster of a format code, zeros for one that is none. 1440 pixels a line look the same here
/// as 1920: only the stream tells them apart.
Raster RasterOf(std::uint8_t format);
bool IsInterlaced(std::uint8_t format);

/// Whether the pictures are 25 a second and progressive, in whichever carrier.
bool Is25p(const VideoStream& video, std::uint8_t pulldown);

/// The rate of a code; 25p goes before it. Null for an undefined code. One rate is given for both
/// scans of code 4: kept, hosts rely on it.
const FrameRate* RateOf(std::uint8_t rateCode, bool is25p);

/// Frames between two times of 45 kHz ticks, rounded: a frame of most rates is no whole number of
/// ticks. The clock starts anew at 2^32, so `out` may be the smaller number. Sums are taken of the
/// frames, never of the ticks.
std::int32_t FramesBetween(std::uint32_t in, std::uint32_t out, const FrameRate& rate);

/// The sum, held at the largest number.
std::int32_t AddFrames(std::int32_t left, std::int32_t right);

/// The recording format's text for a raster and scan. There are texts for 50 Hz only: other rates
/// take the one of their raster and scan, rasters without a text of their own the nearest.
const wchar_t* FormatText(const Raster& raster, bool interlaced, const FrameRate* rate);

} // namespace nqp2::avchd
