// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/frame_rate_text.h"
#include "worker/outcome.h"

#include <cstdint>
#include <string>

namespace nqp2::worker {

/// What a camera file says about itself.
struct MediaFacts {
    std::string codec; ///< four-character code in upper case, else the codec's name
    FrameRate rate = {0, 1};
    bool interlaced = false;
    std::int64_t frames = 0;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int64_t aspectWidth = 0; ///< of the picture as shown, in lowest terms
    std::int64_t aspectHeight = 0;
    int audioChannels = 0;
    std::string timecode;   ///< of the first frame, "" where there is none
    std::string identifier; ///< UMID in hexadecimal, "" where there is none
    std::string date;       ///< ISO 8601 as the file has it, "" where there is none
    std::string title;
};

/// Reads the head of a QuickTime, MP4, AVI or MXF file. Follows no reference to another file.
Outcome ReadMediaFile(const std::string& path, MediaFacts& facts);

} // namespace nqp2::worker
