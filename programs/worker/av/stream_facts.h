// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/av/av_headers.h"

#include <algorithm>
#include <cctype>
#include <string>

/// What libavformat knows of a stream without decoding it.
namespace nqp2::worker {

inline std::string Tag(const AVDictionary* tags, const char* name) {
    const AVDictionaryEntry* const entry = av_dict_get(tags, name, nullptr, 0);
    return entry != nullptr ? entry->value : "";
}

/// The first that any part of the file has to say.
inline std::string TagAnywhere(const AVFormatContext& format, const char* name) {
    std::string value = Tag(format.metadata, name);
    for (unsigned i = 0; value.empty() && i < format.nb_streams; ++i) {
        value = Tag(format.streams[i]->metadata, name);
    }
    return value;
}

/// The codec's four-character code in upper case, else its name.
inline std::string CodecText(const AVCodecParameters& codec) {
    std::string text;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        const auto ch = static_cast<unsigned char>(codec.codec_tag >> shift);
        if (std::isalnum(ch) == 0 && ch != ' ') {
            text = avcodec_get_name(codec.codec_id);
            break;
        }
        text += static_cast<char>(ch);
    }
    while (text.ends_with(' ')) {
        text.pop_back();
    }
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char ch) { return static_cast<char>(std::toupper(ch)); });
    return text;
}

/// DV of the standard-definition rates is interlaced unless it says otherwise.
inline bool IsInterlaced(const AVCodecParameters& codec) {
    return codec.field_order == AV_FIELD_UNKNOWN ? codec.codec_id == AV_CODEC_ID_DVVIDEO
                                                 : codec.field_order != AV_FIELD_PROGRESSIVE;
}

/// The mean needs three frames; what shorter files tell is the rate of their time stamps. Neither
/// is known of some.
inline AVRational FrameRateOf(const AVStream& video) {
    const AVRational mean = video.avg_frame_rate;
    return mean.num > 0 && mean.den > 0 ? mean : video.r_frame_rate;
}

} // namespace nqp2::worker
