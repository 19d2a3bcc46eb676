// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/worker/essence_maker.h"

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
