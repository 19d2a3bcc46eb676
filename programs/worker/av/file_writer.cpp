// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/media_output.h"

#include <array>
#include <utility>

namespace nqp2::worker {
namespace {

/// Where a container looks for what a file tells of itself: a track's or the file's tags.
struct TagPlaces {
    const char* container;
    const char* title;
    bool timecodeOfTrack;
    bool reelOfTrack;
    const char* trackName;
};
constexpr std::array<TagPlaces, 4> kTagPlaces = {{
    {"mov", "title", true, true, "handler_name"},
    {"mp4", "title", true, true, "handler_name"},
    {"mxf", "material_package_name", false, false, "handler_name"},
    {"matroska", "title", false, false, "title"},
}};

AVRational RationalOf(const Tick& tick) {
    return {tick.numerator, tick.denominator};
}

AVFieldOrder OrderOf(FieldOrder order) {
    switch (order) {
    case FieldOrder::Progressive:
        return AV_FIELD_PROGRESSIVE;
    case FieldOrder::TopFirst:
        return AV_FIELD_TT;
    case FieldOrder::BottomFirst:
        return AV_FIELD_BB;
    default:
        return AV_FIELD_UNKNOWN;
    }
}

void Set(AVDictionary*& tags, const char* name, const std::string& text) {
    if (!text.empty() && av_dict_set(&tags, name, text.c_str(), 0) < 0) {
        throw std::bad_alloc();
    }
}

void SetColour(const TrackPlan& plan, AVCodecParameters& codec) {
    // libavutil numbers them as H.273 does.
    if (plan.marks.primaries != 0) {
        codec.color_primaries = static_cast<AVColorPrimaries>(plan.marks.primaries);
        codec.color_trc = static_cast<AVColorTransferCharacteristic>(plan.marks.transfer);
        codec.color_space = static_cast<AVColorSpace>(plan.marks.matrix);
    }
}

void SetParameterSets(const std::string& sets, AVCodecParameters& codec) {
    if (sets.empty()) {
        return;
    }
    av_freep(&codec.extradata);
    codec.extradata_size = 0;
    codec.extradata =
        static_cast<std::uint8_t*>(av_mallocz(sets.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (codec.extradata == nullptr) {
        throw std::bad_alloc();
    }
    std::copy(sets.begin(), sets.end(), codec.extradata);
    codec.extradata_size = static_cast<int>(sets.size());
}

void SetPicture(const TrackPlan& plan, AVStream& stream) {
    AVCodecParameters& codec = *stream.codecpar;
    if (plan.rate.frames > 0) {
        stream.avg_frame_rate = {plan.rate.frames, plan.rate.seconds};
        stream.r_frame_rate = stream.avg_frame_rate;
    }
    if (plan.marks.order != FieldOrder::Unknown) {
        codec.field_order = OrderOf(plan.marks.order);
    }
    if (plan.pixelWidth > 0) {
        codec.sample_aspect_ratio = {plan.pixelWidth, plan.pixelHeight};
    }
    stream.sample_aspect_ratio = codec.sample_aspect_ratio;
    SetParameterSets(plan.parameterSets, codec);
    SetColour(plan, codec);
}

void SetSound(const TrackPlan& plan, AVCodecParameters& codec) {
    codec.codec_type = AVMEDIA_TYPE_AUDIO;
    codec.codec_id = plan.bits == 24 ? AV_CODEC_ID_PCM_S24LE : AV_CODEC_ID_PCM_S16LE;
    codec.format = plan.bits == 24 ? AV_SAMPLE_FMT_S32 : AV_SAMPLE_FMT_S16;
    codec.sample_rate = kSampleRate;
    codec.bits_per_coded_sample = plan.bits;
    codec.block_align = plan.channels * plan.bits / 8;
    codec.bit_rate = std::int64_t{codec.block_align} * 8 * kSampleRate;
    if (plan.channels <= 2) {
        av_channel_layout_default(&codec.ch_layout, plan.channels);
    } else { // nobody knows where the loudspeakers are
        codec.ch_layout.order = AV_CHANNEL_ORDER_UNSPEC;
        codec.ch_layout.nb_channels = plan.channels;
    }
}

class FileWriter final : public MediaWriter {
public:
    FileWriter(const FilePlan& plan, MediaOutput& output)
        : m_plan(plan), m_sink(output), m_packet(av_packet_alloc()) {
        AVFormatContext* format = nullptr;
        avformat_alloc_output_context2(&format, nullptr, plan.container.c_str(), nullptr);
        m_format.reset(format);
        if (format == nullptr || m_packet == nullptr) {
            throw std::bad_alloc();
        }
        format->pb = &m_sink.Io();
        format->flags |= AVFMT_FLAG_CUSTOM_IO;
        // The tags are ours: below this the muxer would choose its own.
        format->strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
    }

    MediaFault Begin() {
        for (const TrackPlan& track : m_plan.tracks) {
            AddTrack(track);
        }
        SetTags();
        SetMarks();
        AVDictionary* options = nullptr;
        if (m_plan.headRoom > 0) {
            av_dict_set_int(&options, "moov_size", static_cast<std::int64_t>(m_plan.headRoom), 0);
        }
        av_dict_set(&options, "movflags", "write_colr", 0);
        av_dict_set(&options, "cluster_size_limit", "1048576", 0); // which is kept in memory
        // Exact lengths of the whole: in steps of the frame rate's numerator.
        const std::int32_t frames = m_plan.tracks.front().rate.frames;
        av_dict_set_int(&options, "movie_timescale", frames >= 1000 ? frames : frames * 1000, 0);
        const int result = avformat_write_header(m_format.get(), &options);
        av_dict_free(&options);
        return m_sink.Checked(result);
    }

    MediaFault Put(const MediaUnit& unit) noexcept override {
        // cppcheck-suppress throwInNoexceptFunction // it is caught
        return WithoutThrowing([&] { return Write(unit); });
    }
    MediaFault Finish() noexcept override {
        return WithoutThrowing([&] { return m_sink.Flushed(av_write_trailer(m_format.get())); });
    }

private:
    void AddTrack(const TrackPlan& plan) {
        AVStream* const stream = avformat_new_stream(m_format.get(), nullptr);
        if (stream == nullptr) {
            throw std::bad_alloc();
        }
        AVCodecParameters& codec = *stream->codecpar;
        if (plan.details != nullptr) {
            const auto* const like = static_cast<const AVCodecParameters*>(plan.details.get());
            if (avcodec_parameters_copy(&codec, like) < 0) {
                throw std::bad_alloc();
            }
        } else {
            SetSound(plan, codec);
        }
        codec.codec_tag = plan.marks.tag;
        stream->time_base = RationalOf(plan.tick);
        if (codec.codec_type == AVMEDIA_TYPE_VIDEO) {
            SetPicture(plan, *stream);
        }
        Set(stream->metadata, Places().trackName, plan.name);
    }

    [[nodiscard]] const TagPlaces& Places() const {
        return *std::find_if(kTagPlaces.begin(), kTagPlaces.end(), [&](const TagPlaces& each) {
            return m_plan.container == each.container;
        });
    }

    void SetTags() {
        AVDictionary*& ofFile = m_format->metadata;
        AVDictionary*& ofPicture = m_format->streams[0]->metadata;
        Set(ofFile, Places().title, m_plan.title);
        Set(ofFile, "creation_time", m_plan.date);
        Set(Places().timecodeOfTrack ? ofPicture : ofFile, "timecode", m_plan.timecode);
        Set(Places().reelOfTrack ? ofPicture : ofFile, "reel_name", m_plan.reel);
    }

    void SetMarks() {
        const std::size_t count = m_plan.marks.size();
        if (count == 0) {
            return;
        }
        m_format->chapters = static_cast<AVChapter**>(av_calloc(count, sizeof(void*)));
        for (const MediaMark& mark : m_plan.marks) {
            auto* const made = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
            if (m_format->chapters == nullptr || made == nullptr) {
                av_free(made);
                throw std::bad_alloc();
            }
            m_format->chapters[m_format->nb_chapters++] = made;
            made->id = m_format->nb_chapters;
            made->time_base = {1, 1000};
            made->start = mark.start;
            Set(made->metadata, "title", mark.text);
        }
        for (std::size_t i = 0; i < count; ++i) {
            m_format->chapters[i]->end = i + 1 < count ? m_plan.marks[i + 1].start : m_plan.length;
        }
    }

    /// What was read is shared, unless its bytes have been changed.
    static void Fill(AVPacket& packet, const MediaUnit& unit) {
        const auto* const read = static_cast<const AVPacket*>(unit.own);
        const auto size = static_cast<int>(unit.bytes.size());
        if (read != nullptr && read->buf != nullptr && read->size == size &&
            reinterpret_cast<const char*>(read->data) == unit.bytes.data()) {
            packet.buf = av_buffer_ref(read->buf);
            packet.data = read->data;
            packet.size = size;
        }
        if (packet.buf == nullptr) {
            if (av_new_packet(&packet, size) < 0) {
                throw std::bad_alloc();
            }
            std::copy(unit.bytes.begin(), unit.bytes.end(), packet.data);
        }
    }

    MediaFault Write(const MediaUnit& unit) {
        AVPacket& packet = *m_packet;
        const AVRational from = RationalOf(m_plan.tracks[unit.stream].tick);
        const AVRational to = m_format->streams[unit.stream]->time_base;
        Fill(packet, unit);
        packet.stream_index = static_cast<int>(unit.stream);
        packet.pts = unit.shown;
        packet.dts = unit.coded;
        packet.duration = unit.duration;
        packet.flags = unit.isKey ? AV_PKT_FLAG_KEY : 0;
        av_packet_rescale_ts(&packet, from, to);
        const int result = av_interleaved_write_frame(m_format.get(), &packet);
        av_packet_unref(&packet);
        return m_sink.Checked(result);
    }

    FilePlan m_plan;
    Sink m_sink;
    OwnPacket m_packet;
    OwnFormat m_format;
};

} // namespace

MediaFault MakeWriter(const FilePlan& plan, MediaOutput& output,
                      std::unique_ptr<MediaWriter>& writer) {
    auto made = std::make_unique<FileWriter>(plan, output);
    MediaFault fault = made->Begin();
    if (fault.empty()) {
        writer = std::move(made);
    }
    return fault;
}

} // namespace nqp2::worker
