// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/media_output.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

class OpAtomMuxer final : public EssenceMuxer {
public:
    OpAtomMuxer(MediaOutput& output, AVRational rate) : m_frame(av_inv_q(rate)), m_sink(output) {
        AVFormatContext* format = nullptr;
        avformat_alloc_output_context2(&format, nullptr, "mxf_opatom", nullptr);
        m_format.reset(format);
        if (format == nullptr || avformat_new_stream(format, nullptr) == nullptr) {
            throw std::bad_alloc();
        }
        format->pb = &m_sink.Io();
        format->flags |= AVFMT_FLAG_CUSTOM_IO;
    }

    [[nodiscard]] AVFormatContext& Format() { return *m_format; }
    [[nodiscard]] AVStream& Stream() { return *m_format->streams[0]; }

    int Begin() { return avformat_write_header(m_format.get(), nullptr); }

    MediaFault Put(std::string_view unit) noexcept override {
        return WithoutThrowing([&] { return Write(unit); });
    }
    MediaFault Finish() noexcept override {
        return WithoutThrowing([&] { return m_sink.Flushed(av_write_trailer(m_format.get())); });
    }

private:
    MediaFault Write(std::string_view unit) {
        const OwnPacket packet(av_packet_alloc());
        if (packet == nullptr || !Fill(*packet, unit)) {
            return AvReason(AVERROR(ENOMEM));
        }
        packet->pts = packet->dts = av_rescale_q(m_units, m_frame, Stream().time_base);
        packet->duration = av_rescale_q(m_units + 1, m_frame, Stream().time_base) - packet->pts;
        packet->flags |= AV_PKT_FLAG_KEY;
        m_sink.Io().direct = m_units != 0 ? 1 : 0; // nothing but the unit: it needs no buffer
        MediaFault fault = m_sink.Flushed(av_write_frame(m_format.get(), packet.get()));
        m_sink.Io().direct = 0;
        m_units += fault.empty() ? 1 : 0;
        return fault;
    }

    /// H.264 is parsed, which may read behind the unit's end; other units are written as they are.
    bool Fill(AVPacket& packet, std::string_view unit) {
        const int size = static_cast<int>(unit.size());
        if (Stream().codecpar->codec_id != AV_CODEC_ID_H264) {
            // libav has no packets of constant bytes; it writes none of them.
            packet.data = reinterpret_cast<std::uint8_t*>(const_cast<char*>(unit.data()));
            packet.size = size;
            return true;
        }
        if (av_new_packet(&packet, size) < 0) {
            return false;
        }
        std::copy(unit.begin(), unit.end(), packet.data);
        return true;
    }

    AVRational m_frame; ///< seconds
    std::int64_t m_units = 0;
    Sink m_sink;
    OwnFormat m_format;
};

AVRational RateOf(const FrameRate& rate) {
    return {rate.frames, rate.seconds};
}

MediaFault Begin(std::unique_ptr<OpAtomMuxer> begun, std::unique_ptr<EssenceMuxer>& muxer) {
    if (const int result = begun->Begin(); result < 0) {
        return AvReason(result);
    }
    muxer = std::move(begun);
    return {};
}

} // namespace

MediaFault MakeVideoMuxer(const VideoFormat& format, MediaOutput& output,
                          std::unique_ptr<EssenceMuxer>& muxer) {
    const AVRational rate = RateOf(format.rate);
    auto made = std::make_unique<OpAtomMuxer>(output, rate);
    AVStream& stream = made->Stream();
    AVCodecParameters& codec = *stream.codecpar;
    codec.codec_type = AVMEDIA_TYPE_VIDEO;
    codec.codec_id = format.codec == VideoCodec::Dv ? AV_CODEC_ID_DVVIDEO : AV_CODEC_ID_H264;
    codec.width = format.width;
    codec.height = format.height;
    codec.format = AV_PIX_FMT_YUV422P;
    codec.field_order = format.interlaced ? AV_FIELD_TT : AV_FIELD_PROGRESSIVE;
    stream.avg_frame_rate = rate;
    stream.time_base = av_inv_q(rate);
    const AVRational shown = format.isWide ? AVRational{16, 9} : AVRational{4, 3};
    stream.sample_aspect_ratio =
        av_mul_q(shown, AVRational{format.height, std::max(format.width, 1)});
    codec.sample_aspect_ratio = stream.sample_aspect_ratio;
    av_dict_set(&stream.metadata, "timecode", format.timecode.c_str(), 0);
    return Begin(std::move(made), muxer);
}

MediaFault MakeSoundMuxer(const SoundFormat& format, MediaOutput& output,
                          std::unique_ptr<EssenceMuxer>& muxer) {
    const AVRational rate = RateOf(format.videoRate);
    auto made = std::make_unique<OpAtomMuxer>(output, rate);
    AVStream& stream = made->Stream();
    AVCodecParameters& codec = *stream.codecpar;
    codec.codec_type = AVMEDIA_TYPE_AUDIO;
    codec.codec_id = format.bits == 24 ? AV_CODEC_ID_PCM_S24LE : AV_CODEC_ID_PCM_S16LE;
    codec.sample_rate = kSampleRate;
    codec.bits_per_coded_sample = format.bits;
    codec.block_align = format.bits / 8;
    av_channel_layout_default(&codec.ch_layout, 1);
    stream.time_base = {1, static_cast<int>(kSampleRate)};
    av_opt_set_q(made->Format().priv_data, "mxf_audio_edit_rate", rate, 0);
    return Begin(std::move(made), muxer);
}

} // namespace nqp2::worker
