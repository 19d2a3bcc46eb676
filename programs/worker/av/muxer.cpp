// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/av_headers.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

struct FreeFormat {
    void operator()(AVFormatContext* format) const { avformat_free_context(format); }
};

class OpAtomMuxer final : public EssenceMuxer {
public:
    OpAtomMuxer(MediaOutput& output, AVRational rate)
        : m_output(output), m_frame(av_inv_q(rate)),
          m_io(MakeIo(this, 1 << 20, nullptr, Drain, Seek)) {
        AVFormatContext* format = nullptr;
        avformat_alloc_output_context2(&format, nullptr, "mxf_opatom", nullptr);
        m_format.reset(format);
        if (format == nullptr || avformat_new_stream(format, nullptr) == nullptr) {
            throw std::bad_alloc();
        }
        format->pb = m_io.get();
        format->flags |= AVFMT_FLAG_CUSTOM_IO;
    }

    [[nodiscard]] AVFormatContext& Format() { return *m_format; }
    [[nodiscard]] AVStream& Stream() { return *m_format->streams[0]; }

    int Begin() { return avformat_write_header(m_format.get(), nullptr); }

    MediaFault Put(std::string_view unit) noexcept override {
        return WithoutThrowing([&] { return Write(unit); });
    }
    MediaFault Finish() noexcept override {
        return WithoutThrowing([&] { return Flushed(av_write_trailer(m_format.get())); });
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
        m_io->direct = m_units != 0 ? 1 : 0; // nothing but the unit: it needs no buffer
        MediaFault fault = Flushed(av_write_frame(m_format.get(), packet.get()));
        m_io->direct = 0;
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

    MediaFault Flushed(int result) {
        avio_flush(m_io.get());
        const int error = result < 0 ? result : m_io->error;
        return error < 0 ? AvReason(error) : MediaFault();
    }

    static OpAtomMuxer& Self(void* muxer) { return *static_cast<OpAtomMuxer*>(muxer); }

    static int Drain(void* muxer, std::uint8_t* bytes, int count) {
        OpAtomMuxer& self = Self(muxer);
        const auto size = static_cast<std::size_t>(std::max(count, 0));
        if (!self.m_output.WriteAt(self.m_position, {reinterpret_cast<const char*>(bytes), size})) {
            return AVERROR(EIO);
        }
        self.m_position += size;
        self.m_size = std::max(self.m_size, self.m_position);
        return count;
    }

    /// It jumps back to complete the head.
    static std::int64_t Seek(void* muxer, std::int64_t offset, int whence) {
        OpAtomMuxer& self = Self(muxer);
        return SeekTo(offset, whence, self.m_size, self.m_position);
    }

    MediaOutput& m_output;
    AVRational m_frame; ///< seconds
    std::uint64_t m_position = 0;
    std::uint64_t m_size = 0;
    std::int64_t m_units = 0;
    OwnIo m_io;
    std::unique_ptr<AVFormatContext, FreeFormat> m_format;
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
