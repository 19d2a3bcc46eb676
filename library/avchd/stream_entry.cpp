// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/stream_entry.h"

namespace nqp2::avchd {

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

} // namespace nqp2::avchd
