// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/essence_file.h"

#include "worker/av_headers.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>
#include <xxhash.h>

namespace nqp2::worker {
namespace {

/// A file in the making as libavformat writes to it: with jumps back to complete the head.
struct Sink {
    platform::FileWriter* writer = nullptr;
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    platform::IoStatus failure; ///< the first one

    int Write(std::string_view bytes) {
        platform::IoStatus status = writer->WriteAt(position, bytes);
        if (!status) {
            failure = failure ? std::move(status) : failure;
            return AVERROR(EIO);
        }
        position += bytes.size();
        size = std::max(size, position);
        return static_cast<int>(bytes.size());
    }

    std::int64_t Seek(std::int64_t offset, int whence) {
        std::int64_t base = 0;
        switch (whence & ~AVSEEK_FORCE) {
        case AVSEEK_SIZE:
            return static_cast<std::int64_t>(size);
        case SEEK_SET:
            break;
        case SEEK_CUR:
            base = static_cast<std::int64_t>(position);
            break;
        case SEEK_END:
            base = static_cast<std::int64_t>(size);
            break;
        default:
            return AVERROR(EINVAL);
        }
        if (offset + base < 0) {
            return AVERROR(EINVAL);
        }
        position = static_cast<std::uint64_t>(offset + base);
        return offset + base;
    }
};

extern "C" int WriteToSink(void* sink, std::uint8_t* bytes, int count) {
    const auto size = static_cast<std::size_t>(std::max(count, 0));
    return static_cast<Sink*>(sink)->Write({reinterpret_cast<const char*>(bytes), size});
}

extern "C" std::int64_t SeekInSink(void* sink, std::int64_t offset, int whence) {
    return static_cast<Sink*>(sink)->Seek(offset, whence);
}

/// Samples of sound that belong to so many frames of video.
std::int64_t SamplesUpTo(std::int64_t frames, AVRational frame) {
    return av_rescale_q(frames, frame, AVRational{1, kSampleRate});
}

} // namespace

struct EssenceFile::Muxer {
    Sink sink;
    AVFormatContext* format = nullptr;
    XXH3_state_t* digest = XXH3_createState();

    explicit Muxer(platform::FileWriter& writer) {
        constexpr int kBufferSize = 1 << 20;
        sink.writer = &writer;
        auto* const buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
        avformat_alloc_output_context2(&format, nullptr, "mxf_opatom", nullptr);
        if (buffer == nullptr || format == nullptr || digest == nullptr ||
            avformat_new_stream(format, nullptr) == nullptr ||
            XXH3_128bits_reset(digest) != XXH_OK) {
            av_free(buffer);
            Free();
            throw std::bad_alloc();
        }
        format->pb =
            avio_alloc_context(buffer, kBufferSize, 1, &sink, nullptr, WriteToSink, SeekInSink);
        if (format->pb == nullptr) {
            av_free(buffer);
            Free();
            throw std::bad_alloc();
        }
        format->flags |= AVFMT_FLAG_CUSTOM_IO;
    }
    ~Muxer() { Free(); }
    Muxer(const Muxer&) = delete;
    Muxer& operator=(const Muxer&) = delete;

    [[nodiscard]] AVStream& Stream() const { return *format->streams[0]; }

private:
    void Free() {
        if (format != nullptr && format->pb != nullptr) {
            av_freep(&format->pb->buffer);
            avio_context_free(&format->pb);
        }
        avformat_free_context(format);
        XXH3_freeState(digest);
    }
};

EssenceFile::EssenceFile(std::string path) : m_path(std::move(path)) {}
EssenceFile::~EssenceFile() = default;

Outcome EssenceFile::Failed(int error) const {
    const platform::IoStatus& failure = m_muxer->sink.failure;
    return failure
               ? Failure("This essence cannot be put into " + m_path + ": " + AvReason(error) + ".")
               : Failure("write", m_path, failure);
}

Outcome EssenceFile::Open() {
    if (const auto status = platform::Files().Create(m_path, m_writer); !status) {
        return Failure("write", m_path, status);
    }
    m_muxer = std::make_unique<Muxer>(*m_writer);
    return {};
}

Outcome EssenceFile::CreateVideo(const std::string& path, const VideoFormat& format,
                                 std::unique_ptr<EssenceFile>& file) {
    file.reset(new EssenceFile(path));
    if (Outcome outcome = file->Open(); !outcome) {
        return outcome;
    }
    AVStream& stream = file->m_muxer->Stream();
    AVCodecParameters& codec = *stream.codecpar;
    codec.codec_type = AVMEDIA_TYPE_VIDEO;
    codec.codec_id = format.codec == VideoCodec::Dv ? AV_CODEC_ID_DVVIDEO : AV_CODEC_ID_H264;
    codec.width = format.width;
    codec.height = format.height;
    codec.format = AV_PIX_FMT_YUV422P;
    codec.field_order = format.interlaced ? AV_FIELD_TT : AV_FIELD_PROGRESSIVE;
    stream.avg_frame_rate = {format.rate.numerator, format.rate.denominator};
    stream.time_base = av_inv_q(stream.avg_frame_rate);
    const AVRational shown = format.isWide ? AVRational{16, 9} : AVRational{4, 3};
    stream.sample_aspect_ratio =
        av_mul_q(shown, AVRational{format.height, std::max(format.width, 1)});
    codec.sample_aspect_ratio = stream.sample_aspect_ratio;
    av_dict_set(&stream.metadata, "timecode", format.timecode.c_str(), 0);
    return file->Begin();
}

Outcome EssenceFile::CreateSound(const std::string& path, const SoundFormat& format,
                                 std::unique_ptr<EssenceFile>& file) {
    file.reset(new EssenceFile(path));
    if (Outcome outcome = file->Open(); !outcome) {
        return outcome;
    }
    AVStream& stream = file->m_muxer->Stream();
    AVCodecParameters& codec = *stream.codecpar;
    codec.codec_type = AVMEDIA_TYPE_AUDIO;
    codec.codec_id = format.bits == 24 ? AV_CODEC_ID_PCM_S24LE : AV_CODEC_ID_PCM_S16LE;
    codec.sample_rate = kSampleRate;
    codec.bits_per_coded_sample = format.bits;
    codec.block_align = format.bits / 8;
    av_channel_layout_default(&codec.ch_layout, 1);
    stream.time_base = {1, kSampleRate};
    const AVRational rate = {format.videoRate.numerator, format.videoRate.denominator};
    stream.avg_frame_rate = rate; // unused by the muxer, kept for NextSoundSize
    av_opt_set_q(file->m_muxer->format->priv_data, "mxf_audio_edit_rate", rate, 0);
    return file->Begin();
}

Outcome EssenceFile::Begin() {
    const int result = avformat_write_header(m_muxer->format, nullptr);
    return result >= 0 ? Outcome() : Failed(result);
}

std::size_t EssenceFile::NextSoundSize() const {
    const AVStream& stream = m_muxer->Stream();
    const AVRational frame = av_inv_q(stream.avg_frame_rate);
    const std::int64_t samples = SamplesUpTo(m_units + 1, frame) - SamplesUpTo(m_units, frame);
    return static_cast<std::size_t>(samples * stream.codecpar->block_align);
}

Outcome EssenceFile::Add(std::string_view bytes) {
    if (m_muxer->Stream().codecpar->codec_type == AVMEDIA_TYPE_VIDEO) {
        return Put(bytes);
    }
    m_sound.append(bytes);
    std::size_t taken = 0;
    Outcome outcome;
    for (std::size_t size = NextSoundSize(); outcome && m_sound.size() - taken >= size;
         size = NextSoundSize()) {
        outcome = Put(std::string_view(m_sound).substr(taken, size));
        taken += size;
    }
    m_sound.erase(0, taken);
    return outcome;
}

Outcome EssenceFile::Put(std::string_view unit) {
    AVFormatContext& format = *m_muxer->format;
    const OwnPacket packet(av_packet_alloc());
    if (packet == nullptr || av_new_packet(packet.get(), static_cast<int>(unit.size())) < 0) {
        return Failed(AVERROR(ENOMEM));
    }
    std::copy(unit.begin(), unit.end(), packet->data);
    const AVStream& stream = m_muxer->Stream();
    const AVRational frame = av_inv_q(stream.avg_frame_rate);
    packet->pts = packet->dts = av_rescale_q(m_units, frame, stream.time_base);
    packet->duration = av_rescale_q(m_units + 1, frame, stream.time_base) - packet->pts;
    packet->flags |= AV_PKT_FLAG_KEY;
    XXH3_128bits_update(m_muxer->digest, unit.data(), unit.size());
    const int result = av_write_frame(&format, packet.get());
    avio_flush(format.pb);
    if (result < 0 || format.pb->error < 0) {
        return Failed(result < 0 ? result : format.pb->error);
    }
    if (m_units == 0) {
        m_essenceStart = m_muxer->sink.position - unit.size();
    }
    ++m_units;
    m_essenceSize += unit.size();
    return {};
}

Outcome EssenceFile::AddSilence(std::int64_t frames) {
    while (!m_sound.empty() || m_units < frames) {
        m_sound.resize(NextSoundSize(), '\0');
        if (Outcome outcome = Put(m_sound); !outcome) {
            return outcome;
        }
        m_sound.clear();
    }
    return {};
}

Outcome EssenceFile::Finish(std::int64_t frames) {
    if (m_muxer->Stream().codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
        if (Outcome outcome = AddSilence(frames); !outcome) {
            return outcome;
        }
    }
    const int result = av_write_trailer(m_muxer->format);
    avio_flush(m_muxer->format->pb);
    if (result < 0 || m_muxer->format->pb->error < 0) {
        return Failed(result < 0 ? result : m_muxer->format->pb->error);
    }
    if (const platform::IoStatus status = m_writer->Flush(); !status) {
        return Failure("write", m_path, status);
    }
    return Verify();
}

Outcome EssenceFile::Verify() {
    const XXH128_hash_t written = XXH3_128bits_digest(m_muxer->digest);
    XXH3_128bits_reset(m_muxer->digest);
    std::string block(std::size_t{1} << 20U, '\0');
    for (std::uint64_t done = 0; done < m_essenceSize;) {
        const auto wanted = std::min<std::uint64_t>(block.size(), m_essenceSize - done);
        std::size_t count = 0;
        const platform::IoStatus status = m_writer->ReadAt(m_essenceStart + done, block.data(),
                                                           static_cast<std::size_t>(wanted), count);
        if (!status) {
            return Failure("read back", m_path, status);
        }
        if (count == 0) {
            break; // the digests differ
        }
        XXH3_128bits_update(m_muxer->digest, block.data(), count);
        done += count;
    }
    return XXH128_isEqual(written, XXH3_128bits_digest(m_muxer->digest)) != 0
               ? Outcome()
               : Failure("What the medium gives back of " + m_path + " is not what was written.");
}

Outcome EssenceFile::Commit() {
    const platform::IoStatus status = m_writer->Commit();
    return status ? Outcome() : Failure("name the file", m_path, status);
}

} // namespace nqp2::worker
