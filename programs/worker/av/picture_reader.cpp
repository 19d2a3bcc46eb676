// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/media_source.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace nqp2::worker {
namespace {

struct FreeDecoder {
    void operator()(AVCodecContext* decoder) const { avcodec_free_context(&decoder); }
};
using Decoder = std::unique_ptr<AVCodecContext, FreeDecoder>;

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using Scaler = std::unique_ptr<SwsContext, FreeScaler>;

template <class Owned>
void RequireMemory(const Owned& owned) {
    if (owned == nullptr) {
        throw std::bad_alloc();
    }
}

/// A file of one picture, by its first bytes.
struct StillKind {
    std::string_view signature;
    AVCodecID codec;
};
constexpr StillKind kStills[] = {
    {"BM", AV_CODEC_ID_BMP},
    {"\x89PNG", AV_CODEC_ID_PNG},
    {"\xFF\xD8\xFF", AV_CODEC_ID_MJPEG},
};

/// AV_CODEC_ID_NONE for what is none of them.
AVCodecID StillCodecOf(MediaInput& input) {
    std::array<char, 4> head = {};
    const std::int64_t count = input.ReadAt(0, head.data(), head.size());
    const std::string_view start(head.data(),
                                 static_cast<std::size_t>(std::max(count, INT64_C(0))));
    const auto* const kind =
        std::find_if(std::begin(kStills), std::end(kStills),
                     [&](const StillKind& each) { return start.starts_with(each.signature); });
    return kind != std::end(kStills) ? kind->codec : AV_CODEC_ID_NONE;
}

/// `parameters` may be null.
MediaFault OpenDecoder(AVCodecID codec, const AVCodecParameters* parameters, Decoder& decoder) {
    // Larger than any camera's pictures; what a forged head asks for takes no memory.
    constexpr std::int64_t kMostPixels = std::int64_t{40} << 20U;
    const AVCodec* const found = avcodec_find_decoder(codec);
    if (found == nullptr) {
        return std::string("there is no decoder for ") + avcodec_get_name(codec);
    }
    decoder.reset(avcodec_alloc_context3(found));
    RequireMemory(decoder);
    int result =
        parameters != nullptr ? avcodec_parameters_to_context(decoder.get(), parameters) : 0;
    decoder->max_pixels = kMostPixels;
    decoder->thread_count = 1;
    if (result >= 0) {
        result = avcodec_open2(decoder.get(), found, nullptr);
    }
    return result >= 0 ? MediaFault() : AvReason(result);
}

/// Gives a packet to the decoder, null for the end. True when there is a picture.
bool Decode(AVCodecContext& decoder, const AVPacket* packet, AVFrame& frame) {
    return avcodec_send_packet(&decoder, packet) >= 0 &&
           avcodec_receive_frame(&decoder, &frame) >= 0;
}

MediaFault DecodeStill(MediaInput& input, AVCodecID codec, AVFrame& frame) {
    constexpr std::uint64_t kLargest = std::uint64_t{32} << 20U;
    if (input.Size() > kLargest) {
        return "it is too large for a picture";
    }
    Decoder decoder;
    if (MediaFault fault = OpenDecoder(codec, nullptr, decoder); !fault.empty()) {
        return fault;
    }
    const OwnPacket packet(av_packet_alloc());
    const auto size = static_cast<int>(input.Size());
    if (packet == nullptr || av_new_packet(packet.get(), size) < 0) {
        throw std::bad_alloc();
    }
    const std::int64_t count =
        input.ReadAt(0, reinterpret_cast<char*>(packet->data), static_cast<std::size_t>(size));
    av_shrink_packet(packet.get(), static_cast<int>(std::max(count, INT64_C(0))));
    const bool isDecoded =
        Decode(*decoder, packet.get(), frame) || Decode(*decoder, nullptr, frame);
    return isDecoded ? "" : "its picture cannot be decoded";
}

MediaFault DecodeFirst(MediaInput& input, AVFrame& frame) {
    constexpr int kMostPackets = 2000; // of sound too, which may come first
    Source source(input);
    Format format;
    if (MediaFault fault = source.Open(kContainers, format); !fault.empty()) {
        return fault;
    }
    const int video = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0) {
        return "there is no picture in it";
    }
    AVStream& stream = *format->streams[video];
    Decoder decoder;
    if (MediaFault fault = OpenDecoder(stream.codecpar->codec_id, stream.codecpar, decoder);
        !fault.empty()) {
        return fault;
    }
    const OwnPacket packet(av_packet_alloc());
    RequireMemory(packet);
    bool isDecoded = false;
    for (int i = 0; !isDecoded && i < kMostPackets && input.GoesOn() &&
                    av_read_frame(format.get(), packet.get()) >= 0;
         ++i) {
        isDecoded = packet->stream_index == video && Decode(*decoder, packet.get(), frame);
        av_packet_unref(packet.get());
    }
    if (!isDecoded && !Decode(*decoder, nullptr, frame)) {
        return "its first picture cannot be decoded";
    }
    if (frame.sample_aspect_ratio.num <= 0 || frame.sample_aspect_ratio.den <= 0) {
        frame.sample_aspect_ratio = av_guess_sample_aspect_ratio(format.get(), &stream, &frame);
    }
    return {};
}

/// How large the frame is shown within the bounds: in its own shape, and never larger than it is.
std::pair<int, int> ShownSize(const AVFrame& frame, std::int32_t width, std::int32_t height) {
    const AVRational pixel = frame.sample_aspect_ratio;
    const double shape = pixel.num > 0 && pixel.den > 0 ? av_q2d(pixel) : 1.0;
    const double wide = frame.width * std::clamp(shape, 0.25, 4.0);
    const double tall = frame.height;
    const double scale = std::min({1.0, width / wide, height / tall});
    const auto side = [scale](double full, std::int32_t bound) {
        return std::clamp(static_cast<int>(std::lround(full * scale)), 1, bound);
    };
    return {side(wide, width), side(tall, height)};
}

MediaFault Scale(const AVFrame& frame, std::int32_t width, std::int32_t height, Picture& picture) {
    constexpr int kBytesPerPixel = 3;
    // The scaler writes beyond the rows' ends.
    constexpr std::size_t kSpare = 64;
    const auto [wide, tall] = ShownSize(frame, width, height);
    const Scaler scaler(sws_getContext(frame.width, frame.height,
                                       static_cast<AVPixelFormat>(frame.format), wide, tall,
                                       AV_PIX_FMT_RGB24, SWS_AREA, nullptr, nullptr, nullptr));
    if (scaler == nullptr) {
        return "its picture cannot be made small";
    }
    picture.width = wide;
    picture.height = tall;
    const std::size_t row = static_cast<std::size_t>(wide) * kBytesPerPixel;
    picture.pixels.assign(row * static_cast<std::size_t>(tall) + kSpare, '\0');
    std::uint8_t* const rows[] = {reinterpret_cast<std::uint8_t*>(picture.pixels.data()), nullptr,
                                  nullptr, nullptr};
    const int strides[] = {static_cast<int>(row), 0, 0, 0};
    const int done =
        sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, rows, strides);
    picture.pixels.resize(row * static_cast<std::size_t>(tall));
    return done == tall ? MediaFault() : "its picture cannot be made small";
}

} // namespace

MediaFault ReadPicture(MediaInput& input, std::int32_t width, std::int32_t height,
                       Picture& picture) {
    const Frame frame(av_frame_alloc());
    RequireMemory(frame);
    const AVCodecID still = StillCodecOf(input);
    MediaFault fault =
        still != AV_CODEC_ID_NONE ? DecodeStill(input, still, *frame) : DecodeFirst(input, *frame);
    return fault.empty() ? Scale(*frame, width, height, picture) : fault;
}

} // namespace nqp2::worker
