// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/media_source.h"
#include "worker/av/stream_facts.h"

#include <utility>

namespace nqp2::worker {
namespace {

struct FreeParameters {
    void operator()(AVCodecParameters* codec) const { avcodec_parameters_free(&codec); }
};

std::shared_ptr<const void> CopyOf(const AVCodecParameters& codec) {
    std::unique_ptr<AVCodecParameters, FreeParameters> copy(avcodec_parameters_alloc());
    if (copy == nullptr || avcodec_parameters_copy(copy.get(), &codec) < 0) {
        throw std::bad_alloc();
    }
    return {std::move(copy)};
}

FieldOrder OrderOf(AVFieldOrder order) {
    switch (order) {
    case AV_FIELD_PROGRESSIVE:
        return FieldOrder::Progressive;
    case AV_FIELD_TT:
    case AV_FIELD_TB:
        return FieldOrder::TopFirst;
    case AV_FIELD_BB:
    case AV_FIELD_BT:
        return FieldOrder::BottomFirst;
    default:
        return FieldOrder::Unknown;
    }
}

std::int64_t TimeOf(std::int64_t time) {
    return time == AV_NOPTS_VALUE ? kNoTime : time;
}

void TakePicture(const AVStream& stream, MediaStream& facts) {
    const AVCodecParameters& codec = *stream.codecpar;
    facts.width = codec.width;
    facts.height = codec.height;
    const AVRational pixel =
        stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio : codec.sample_aspect_ratio;
    if (pixel.num > 0 && pixel.den > 0) {
        facts.pixelWidth = pixel.num;
        facts.pixelHeight = pixel.den;
    }
    const char* const pixels = av_get_pix_fmt_name(static_cast<AVPixelFormat>(codec.format));
    facts.pixels = pixels != nullptr ? pixels : "";
    if (const AVRational rate = FrameRateOf(stream); rate.num > 0 && rate.den > 0) {
        facts.rate = {rate.num, rate.den};
    }
    facts.order = OrderOf(codec.field_order);
    facts.isIntra = codec.codec_id == AV_CODEC_ID_DVVIDEO ||
                    (codec.profile > 0 && (codec.profile & FF_PROFILE_H264_INTRA) != 0);
    facts.delay = codec.video_delay;
    facts.hasColour = codec.color_primaries != AVCOL_PRI_UNSPECIFIED;
}

MediaStream FactsOf(const AVStream& stream) {
    const AVCodecParameters& codec = *stream.codecpar;
    MediaStream facts;
    facts.codec = avcodec_get_name(codec.codec_id);
    facts.tick = {stream.time_base.num, stream.time_base.den};
    facts.start = TimeOf(stream.start_time);
    facts.length = std::max<std::int64_t>(stream.duration, 0);
    if (codec.extradata_size > 0) {
        facts.parameterSets.assign(reinterpret_cast<const char*>(codec.extradata),
                                   static_cast<std::size_t>(codec.extradata_size));
    }
    facts.details = CopyOf(codec);
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO) {
        facts.kind = StreamKind::Picture;
        TakePicture(stream, facts);
    } else if (codec.codec_type == AVMEDIA_TYPE_AUDIO) {
        facts.kind = StreamKind::Sound;
        facts.channels = codec.ch_layout.nb_channels;
        facts.hertz = codec.sample_rate;
        facts.bits = av_get_bits_per_sample(codec.codec_id);
    }
    return facts;
}

class StreamReader final : public MediaReader {
public:
    explicit StreamReader(MediaInput& input)
        : m_source(input, 1 << 17), m_packet(av_packet_alloc()) {
        if (m_packet == nullptr) {
            throw std::bad_alloc();
        }
    }

    MediaFault Open(const char* containers, MediaLook look) {
        if (MediaFault fault = m_source.Open(containers, m_format, false, look == MediaLook::First);
            !fault.empty()) {
            return fault;
        }
        m_format->flags |= look == MediaLook::Plain ? AVFMT_FLAG_NOPARSE : 0;
        for (unsigned i = 0; i < m_format->nb_streams; ++i) {
            m_streams.push_back(FactsOf(*m_format->streams[i]));
        }
        m_timecode = TagAnywhere(*m_format, "timecode");
        for (unsigned i = 0; i < m_format->nb_chapters; ++i) {
            const AVChapter& mark = *m_format->chapters[i];
            m_marks.push_back({av_rescale_q(mark.start, mark.time_base, AVRational{1, 1000}),
                               Tag(mark.metadata, "title")});
        }
        return {};
    }

    [[nodiscard]] const std::vector<MediaStream>& Streams() const override { return m_streams; }
    [[nodiscard]] const std::string& Timecode() const override { return m_timecode; }
    [[nodiscard]] const std::vector<MediaMark>& Marks() const override { return m_marks; }

    MediaFault Next(MediaUnit& unit, bool& isEnd) noexcept override {
        return WithoutThrowing([&] { return Read(unit, isEnd); });
    }

    [[nodiscard]] bool IsCut(std::size_t stream) const override {
        const auto* const parser = av_stream_get_parser(m_format->streams[stream]);
        return parser != nullptr && (parser->flags & PARSER_FLAG_COMPLETE_FRAMES) == 0;
    }

    MediaFault GoTo(std::size_t stream, std::int64_t tick) noexcept override {
        return WithoutThrowing([&] {
            const int result =
                av_seek_frame(m_format.get(), static_cast<int>(stream), tick, AVSEEK_FLAG_BACKWARD);
            return result < 0 ? AvReason(result) : MediaFault();
        });
    }

private:
    MediaFault Read(MediaUnit& unit, bool& isEnd) {
        av_packet_unref(m_packet.get());
        const int result = av_read_frame(m_format.get(), m_packet.get());
        const int error = result == AVERROR_EOF ? m_format->pb->error : result;
        isEnd = result == AVERROR_EOF;
        if (error < 0 && error != AVERROR_EOF) {
            return AvReason(error);
        }
        if (isEnd) {
            return {};
        }
        const AVPacket& packet = *m_packet;
        unit.stream = static_cast<std::size_t>(packet.stream_index);
        unit.bytes = {reinterpret_cast<const char*>(packet.data),
                      static_cast<std::size_t>(std::max(packet.size, 0))};
        unit.own = &packet;
        unit.shown = TimeOf(packet.pts);
        unit.coded = TimeOf(packet.dts);
        unit.duration = packet.duration;
        unit.position = static_cast<std::uint64_t>(std::max<std::int64_t>(packet.pos, 0));
        unit.isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
        unit.isDamaged = (packet.flags & AV_PKT_FLAG_CORRUPT) != 0;
        return {};
    }

    Source m_source;
    OwnPacket m_packet;
    Format m_format;
    std::vector<MediaStream> m_streams;
    std::string m_timecode;
    std::vector<MediaMark> m_marks;
};

} // namespace

MediaFault MakeReader(MediaInput& input, const char* containers, MediaLook look,
                      std::unique_ptr<MediaReader>& reader) {
    auto made = std::make_unique<StreamReader>(input);
    MediaFault fault = made->Open(containers, look);
    if (fault.empty()) {
        reader = std::move(made);
    }
    return fault;
}

} // namespace nqp2::worker
