// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/av/av_headers.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::worker {

/// How test pictures are encoded.
struct TestEncoding {
    const char* encoder;
    int width;
    int height;
    AVRational rate;
    AVPixelFormat pixels;
    const char* options = "";
};

inline constexpr TestEncoding kDv25Pal = {"dvvideo", 720, 576, {25, 1}, AV_PIX_FMT_YUV420P};

/// Access units of a picture that changes; none when this libavcodec has no such encoder.
std::vector<std::string> EncodePictures(const TestEncoding& encoding, int count);

/// What libavformat reads of a file's first stream, packets joined.
struct ReadBack {
    std::string essence;
    int packets = 0;
    std::int64_t position = -1; ///< of the first packet
};
ReadBack ReadEssence(const std::string& path);

/// A transport stream of AVCHD: packets of 192 bytes, pictures of which some are shown later than
/// others that follow them, AC-3. False when this libavcodec has no such encoders.
bool WriteTransportStream(const std::string& path, int pictures, double firstSecond);

/// What a player makes of a file.
struct Played {
    std::string tag;                       ///< of the pictures
    std::vector<std::size_t> pictures;     ///< a hash of each
    std::vector<std::string> sound;        ///< of each track, as it lies in the file
    AVFieldOrder order = AV_FIELD_UNKNOWN; ///< as the file tells it
    std::string timecode;
    std::vector<std::string> marks;
    bool hasFault = false; ///< a decoder complained
};
Played Play(const std::string& path);

} // namespace nqp2::worker
