// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/worker/essence_maker.h"

#include <algorithm>
#include <string_view>

namespace nqp2::worker {
namespace {

void Paint(AVFrame& frame, bool isDeep, int number) {
    for (const AVBufferRef* plane : frame.buf) {
        for (std::size_t at = 0; plane != nullptr && at < plane->size; ++at) {
            // x264 trusts that ten bits are ten; the low byte of two comes first.
            const bool isHigh = isDeep && at % 2 != 0;
            plane->data[at] = static_cast<std::uint8_t>(
                isHigh ? 0 : (static_cast<std::size_t>(number) * 20 + at / 8192 * 4) & 0x3C);
        }
    }
}

AVCodecContext* OpenEncoder(const TestEncoding& encoding) {
    const AVCodec* const codec = avcodec_find_encoder_by_name(encoding.encoder);
    if (codec == nullptr) {
        return nullptr;
    }
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->width = encoding.width;
    context->height = encoding.height;
    context->framerate = encoding.rate;
    context->time_base = av_inv_q(encoding.rate);
    context->pix_fmt = encoding.pixels;
    context->thread_count = 1;
    AVDictionary* options = nullptr;
    av_dict_parse_string(&options, encoding.options, "=", ":", 0);
    if (avcodec_open2(context, codec, &options) < 0) {
        avcodec_free_context(&context);
    }
    av_dict_free(&options);
    return context;
}

AVStream* AddStream(AVFormatContext& format, AVMediaType type, AVCodecID codec) {
    AVStream* const stream = avformat_new_stream(&format, nullptr);
    stream->codecpar->codec_type = type;
    stream->codecpar->codec_id = codec;
    return stream;
}

bool WritePacket(AVFormatContext& format, int stream, AVRational timeBase, std::int64_t time,
                 const std::string& bytes) {
    const OwnPacket packet(av_packet_alloc());
    av_new_packet(packet.get(), static_cast<int>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), packet->data);
    packet->stream_index = stream;
    packet->flags |= AV_PKT_FLAG_KEY;
    packet->pts = packet->dts = av_rescale_q(time, timeBase, format.streams[stream]->time_base);
    return av_interleaved_write_frame(&format, packet.get()) >= 0;
}

} // namespace

std::vector<std::string> EncodePictures(const TestEncoding& encoding, int count) {
    av_log_set_level(AV_LOG_QUIET);
    std::vector<std::string> units;
    AVCodecContext* context = OpenEncoder(encoding);
    if (context == nullptr) {
        return units;
    }
    AVFrame* frame = av_frame_alloc();
    frame->width = encoding.width;
    frame->height = encoding.height;
    frame->format = encoding.pixels;
    av_frame_get_buffer(frame, 0);
    const OwnPacket packet(av_packet_alloc());
    for (int i = 0; i <= count; ++i) {
        if (i < count) {
            av_frame_make_writable(frame);
            Paint(*frame, std::string_view(encoding.encoder) == "libx264", i);
            frame->pts = i;
        }
        avcodec_send_frame(context, i < count ? frame : nullptr);
        while (avcodec_receive_packet(context, packet.get()) >= 0) {
            units.emplace_back(reinterpret_cast<const char*>(packet->data),
                               static_cast<std::size_t>(packet->size));
            av_packet_unref(packet.get());
        }
    }
    av_frame_free(&frame);
    avcodec_free_context(&context);
    return units;
}

bool WriteMovie(const std::string& path, const char* container, const TestEncoding& encoding,
                int frames) {
    const std::vector<std::string> units = EncodePictures(encoding, frames);
    AVFormatContext* format = nullptr;
    if (avformat_alloc_output_context2(&format, nullptr, container, path.c_str()) < 0 ||
        avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE) < 0) {
        return false;
    }
    AVStream* const video = AddStream(*format, AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_DVVIDEO);
    video->codecpar->width = encoding.width;
    video->codecpar->height = encoding.height;
    video->codecpar->format = encoding.pixels;
    video->avg_frame_rate = encoding.rate;
    video->time_base = av_inv_q(encoding.rate);
    AVStream* const sound = AddStream(*format, AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_PCM_S16LE);
    sound->codecpar->sample_rate = 48000;
    sound->codecpar->block_align = 4;
    sound->codecpar->bits_per_coded_sample = 16;
    av_channel_layout_default(&sound->codecpar->ch_layout, 2);
    sound->time_base = {1, 48000};
    av_dict_set(&video->metadata, "timecode", "01:02:03:04", 0);
    av_dict_set(&format->metadata, "title", "A walk", 0);
    bool isSound = avformat_write_header(format, nullptr) >= 0;
    for (int i = 0; isSound && i < frames; ++i) {
        isSound = WritePacket(*format, 0, av_inv_q(encoding.rate), i,
                              units[static_cast<std::size_t>(i)]) &&
                  WritePacket(*format, 1, {1, 48000}, std::int64_t{i} * 1920,
                              std::string(std::size_t{1920} * 4, 's'));
    }
    isSound = isSound && av_write_trailer(format) >= 0;
    avio_closep(&format->pb);
    avformat_free_context(format);
    return isSound;
}

ReadBack ReadEssence(const std::string& path) {
    ReadBack read;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) {
        return read;
    }
    const OwnPacket packet(av_packet_alloc());
    while (av_read_frame(format, packet.get()) >= 0) {
        read.position = read.packets++ == 0 ? packet->pos : read.position;
        read.essence.append(reinterpret_cast<const char*>(packet->data),
                            static_cast<std::size_t>(packet->size));
        av_packet_unref(packet.get());
    }
    avformat_close_input(&format);
    return read;
}

} // namespace nqp2::worker
