// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/media_source.h"
#include "worker/av/stream_facts.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

std::int64_t CountFrames(const AVFormatContext& format, const AVStream& video) {
    if (video.nb_frames > 0) {
        return video.nb_frames;
    }
    const AVRational frame = av_inv_q(FrameRateOf(video));
    if (frame.num <= 0 || frame.den <= 0) {
        return 0;
    }
    if (video.duration > 0) {
        return av_rescale_q(video.duration, video.time_base, frame);
    }
    return format.duration > 0 ? av_rescale_q(format.duration, AVRational{1, AV_TIME_BASE}, frame)
                               : 0;
}

void ReadPicture(AVFormatContext& format, AVStream& video, MediaFacts& facts) {
    const AVCodecParameters& codec = *video.codecpar;
    facts.codec = CodecText(codec);
    facts.interlaced = IsInterlaced(codec);
    const AVRational rate = FrameRateOf(video);
    if (rate.num > 0 && rate.den > 0) {
        facts.rate = {rate.num, rate.den};
    }
    facts.frames = CountFrames(format, video);
    facts.width = codec.width;
    facts.height = codec.height;
    AVRational pixel = av_guess_sample_aspect_ratio(&format, &video, nullptr);
    if (pixel.num <= 0 || pixel.den <= 0) {
        pixel = {1, 1};
    }
    int width = 0;
    int height = 0;
    av_reduce(&width, &height, std::int64_t{codec.width} * pixel.num,
              std::int64_t{codec.height} * pixel.den, 1 << 20);
    facts.aspectWidth = width;
    facts.aspectHeight = height;
}

int CountChannels(const AVFormatContext& format) {
    int channels = 0;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVCodecParameters& codec = *format.streams[i]->codecpar;
        if (codec.codec_type == AVMEDIA_TYPE_AUDIO) {
            channels += std::clamp(codec.ch_layout.nb_channels, 0, 64);
        }
    }
    return channels;
}

std::string Identifier(const AVFormatContext& format) {
    constexpr std::size_t kDigits = 64;
    std::string text = TagAnywhere(format, "material_package_umid");
    if (text.starts_with("0x")) {
        text.erase(0, 2);
    }
    return text.size() == kDigits ? text : "";
}

} // namespace

MediaFault ReadMedia(MediaInput& input, MediaFacts& facts) {
    Source source(input);
    Format format;
    if (MediaFault fault = source.Open(kContainers, format); !fault.empty()) {
        return fault;
    }
    const int video = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0) {
        return "there is no picture in it";
    }
    ReadPicture(*format, *format->streams[video], facts);
    facts.audioChannels = CountChannels(*format);
    facts.timecode = TagAnywhere(*format, "timecode");
    facts.identifier = Identifier(*format);
    facts.date = TagAnywhere(*format, "creation_time");
    facts.title = Tag(format->metadata, "title");
    return {};
}

} // namespace nqp2::worker
