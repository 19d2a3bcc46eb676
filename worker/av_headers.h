// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

// libavformat's headers are C and not written for our warnings.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include <memory>
#include <string>

namespace nqp2::worker {

/// What an error number of libavformat means.
inline std::string AvReason(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    return av_strerror(error, text, sizeof text) == 0 ? text : "error " + std::to_string(error);
}

struct PacketFree {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using OwnPacket = std::unique_ptr<AVPacket, PacketFree>;

} // namespace nqp2::worker
