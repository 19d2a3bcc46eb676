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

} // namespace nqp2::worker
