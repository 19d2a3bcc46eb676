// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/worker/essence_maker.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <functional>
#include <gtest/gtest.h>
#include <memory>
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

namespace {

struct FreeDecoder {
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};
using Codec = std::unique_ptr<AVCodecContext, FreeDecoder>;

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

/// Gives an encoder a frame, null for the end, and the muxer what comes of it.
void Pass(AVCodecContext& codec, const AVFrame* frame, AVFormatContext& format, int stream,
          double firstSecond) {
    const OwnPacket packet(av_packet_alloc());
    avcodec_send_frame(&codec, frame);
    while (avcodec_receive_packet(&codec, packet.get()) >= 0) {
        packet->stream_index = stream;
        packet->duration = stream == 0 ? 1 : packet->duration;
        av_packet_rescale_ts(packet.get(), codec.time_base, format.streams[stream]->time_base);
        const auto first = static_cast<std::int64_t>(firstSecond * 90000);
        packet->pts += first;
        packet->dts += first;
        av_interleaved_write_frame(&format, packet.get());
    }
}

Codec SoundEncoder() {
    const AVCodec* const ac3 = avcodec_find_encoder(AV_CODEC_ID_AC3);
    Codec codec(ac3 != nullptr ? avcodec_alloc_context3(ac3) : nullptr);
    if (codec != nullptr) {
        codec->sample_rate = kSampleRate;
        codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
        codec->time_base = {1, static_cast<int>(kSampleRate)};
        av_channel_layout_default(&codec->ch_layout, 2);
        avcodec_open2(codec.get(), ac3, nullptr);
    }
    return codec;
}

Frame PictureFrame(const TestEncoding& encoding) {
    Frame frame(av_frame_alloc());
    frame->width = encoding.width;
    frame->height = encoding.height;
    frame->format = encoding.pixels;
    av_frame_get_buffer(frame.get(), 0);
    return frame;
}

Frame SoundFrame(const AVCodecContext& codec) {
    Frame frame(av_frame_alloc());
    frame->format = codec.sample_fmt;
    frame->nb_samples = codec.frame_size;
    frame->sample_rate = codec.sample_rate;
    av_channel_layout_copy(&frame->ch_layout, &codec.ch_layout);
    av_frame_get_buffer(frame.get(), 0);
    av_samples_set_silence(frame->data, 0, frame->nb_samples, 2, codec.sample_fmt);
    return frame;
}

void AddTrack(AVFormatContext& format, const AVCodecContext& codec) {
    AVStream* const stream = avformat_new_stream(&format, nullptr);
    avcodec_parameters_from_context(stream->codecpar, &codec);
    stream->time_base = codec.time_base;
}

} // namespace

bool WriteTransportStream(const std::string& path, int pictures, double firstSecond) {
    av_log_set_level(AV_LOG_QUIET);
    const TestEncoding encoding = {
        "libx264", 320, 240, {25, 1}, AV_PIX_FMT_YUV420P, "bf=2:g=12:preset=ultrafast"};
    const Codec video(OpenEncoder(encoding));
    const Codec sound = SoundEncoder();
    if (video == nullptr || sound == nullptr) {
        return false;
    }
    AVFormatContext* format = nullptr;
    avformat_alloc_output_context2(&format, nullptr, "mpegts", path.c_str());
    AddTrack(*format, *video);
    AddTrack(*format, *sound);
    av_opt_set(format->priv_data, "mpegts_m2ts_mode", "1", 0);
    avio_open(&format->pb, path.c_str(), AVIO_FLAG_WRITE);
    EXPECT_GE(avformat_write_header(format, nullptr), 0);
    const Frame picture = PictureFrame(encoding);
    const Frame silence = SoundFrame(*sound);
    std::int64_t samples = 0;
    for (int i = 0; i < pictures; ++i) {
        av_frame_make_writable(picture.get());
        Paint(*picture, true, i);
        picture->pts = i;
        Pass(*video, picture.get(), *format, 0, firstSecond);
        for (; samples * 25 < (i + 1) * std::int64_t{kSampleRate}; samples += silence->nb_samples) {
            silence->pts = samples;
            Pass(*sound, silence.get(), *format, 1, firstSecond);
        }
    }
    Pass(*video, nullptr, *format, 0, firstSecond);
    Pass(*sound, nullptr, *format, 1, firstSecond);
    EXPECT_GE(av_write_trailer(format), 0);
    avio_closep(&format->pb);
    avformat_free_context(format);
    return true;
}

namespace {

std::size_t HashOf(const AVFrame& frame) {
    std::string bytes(static_cast<std::size_t>(av_image_get_buffer_size(
                          static_cast<AVPixelFormat>(frame.format), frame.width, frame.height, 1)),
                      '\0');
    av_image_copy_to_buffer(reinterpret_cast<std::uint8_t*>(bytes.data()),
                            static_cast<int>(bytes.size()), frame.data, frame.linesize,
                            static_cast<AVPixelFormat>(frame.format), frame.width, frame.height, 1);
    return std::hash<std::string>()(bytes);
}

void Decode(AVCodecContext& decoder, const AVPacket* packet, Played& played) {
    const Frame frame(av_frame_alloc());
    played.hasFault = avcodec_send_packet(&decoder, packet) < 0 || played.hasFault;
    while (avcodec_receive_frame(&decoder, frame.get()) >= 0) {
        played.hasFault = played.hasFault || frame->decode_error_flags != 0;
        played.pictures.push_back(HashOf(*frame));
    }
}

std::string TextAt(const AVDictionary* tags, const char* name) {
    const AVDictionaryEntry* const entry = av_dict_get(tags, name, nullptr, 0);
    return entry != nullptr ? entry->value : "";
}

} // namespace

Played Play(const std::string& path) {
    Played played;
    AVFormatContext* format = nullptr;
    const bool isOpen = avformat_open_input(&format, path.c_str(), nullptr, nullptr) >= 0;
    if (isOpen && format->nb_streams > 0) {
        played.order = format->streams[0]->codecpar->field_order;
    }
    if (!isOpen || avformat_find_stream_info(format, nullptr) < 0) {
        avformat_close_input(&format);
        return played;
    }
    played.timecode = TextAt(format->metadata, "timecode");
    std::vector<std::size_t> soundOf(format->nb_streams, 0); // numbers from 1 on
    const int video = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVStream& stream = *format->streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            played.sound.emplace_back();
            soundOf[i] = played.sound.size();
        }
        const std::string timecode = TextAt(stream.metadata, "timecode");
        played.timecode = timecode.empty() ? played.timecode : timecode;
    }
    for (unsigned i = 0; i < format->nb_chapters; ++i) {
        played.marks.push_back(TextAt(format->chapters[i]->metadata, "title"));
    }
    const AVCodecParameters& codec = *format->streams[video]->codecpar;
    char tag[AV_FOURCC_MAX_STRING_SIZE] = {};
    played.tag = av_fourcc_make_string(tag, codec.codec_tag);
    const Codec decoder(avcodec_alloc_context3(avcodec_find_decoder(codec.codec_id)));
    avcodec_parameters_to_context(decoder.get(), &codec);
    avcodec_open2(decoder.get(), nullptr, nullptr);
    const OwnPacket packet(av_packet_alloc());
    while (av_read_frame(format, packet.get()) >= 0) {
        const auto stream = static_cast<std::size_t>(packet->stream_index);
        if (packet->stream_index == video) {
            Decode(*decoder, packet.get(), played);
        } else if (stream < soundOf.size() && soundOf[stream] != 0) {
            played.sound[soundOf[stream] - 1].append(reinterpret_cast<const char*>(packet->data),
                                                     static_cast<std::size_t>(packet->size));
        }
        av_packet_unref(packet.get());
    }
    Decode(*decoder, nullptr, played);
    avformat_close_input(&format);
    return played;
}

} // namespace nqp2::worker
