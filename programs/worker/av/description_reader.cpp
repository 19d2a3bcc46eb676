// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/av/media_source.h"
#include "worker/av/stream_facts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace nqp2::worker {
namespace {

// Real files have some dozen tags; what a forged one holds must not fill an answer.
constexpr std::size_t kMostTexts = 4096;
constexpr std::size_t kMostBytes = std::size_t{1} << 20U; ///< of all together
constexpr std::size_t kLongestText = std::size_t{64} << 10U;
constexpr std::size_t kLongestName = 256;

constexpr const char* kLanguage = "language";

struct CodecName {
    AVCodecID id;
    const char* name;
};
constexpr CodecName kNames[] = {
    {AV_CODEC_ID_H264, "H.264"},
    {AV_CODEC_ID_HEVC, "H.265"},
    {AV_CODEC_ID_MPEG1VIDEO, "MPEG-1 Video"},
    {AV_CODEC_ID_MPEG2VIDEO, "MPEG-2 Video"},
    {AV_CODEC_ID_MPEG4, "MPEG-4 Visual"},
    {AV_CODEC_ID_DVVIDEO, "DV"},
    {AV_CODEC_ID_VC1, "VC-1"},
    {AV_CODEC_ID_DNXHD, "VC-3"},
    {AV_CODEC_ID_JPEG2000, "JPEG 2000"},
    {AV_CODEC_ID_MJPEG, "Motion JPEG"},
    {AV_CODEC_ID_MP1, "MPEG-1 Audio"},
    {AV_CODEC_ID_MP2, "MPEG-1 Audio"},
    {AV_CODEC_ID_MP3, "MPEG-1 Audio"},
    {AV_CODEC_ID_AC3, "AC-3"},
    {AV_CODEC_ID_EAC3, "E-AC-3"},
    {AV_CODEC_ID_PCM_ALAW, "G.711 A-law"},
    {AV_CODEC_ID_PCM_MULAW, "G.711 mu-law"},
};

/// What has no name here is called as libavcodec does, or by its code in the file.
std::string StandardName(const AVCodecParameters& codec) {
    const auto* const found =
        std::find_if(std::begin(kNames), std::end(kNames),
                     [&](const CodecName& each) { return each.id == codec.codec_id; });
    if (found != std::end(kNames)) {
        return found->name;
    }
    const std::string_view known = avcodec_get_name(codec.codec_id);
    if (known.starts_with("pcm_")) {
        return "LPCM";
    }
    if (codec.codec_id == AV_CODEC_ID_NONE && codec.codec_tag == 0) {
        return {};
    }
    AVCodecParameters plain = codec;
    plain.codec_tag = codec.codec_id == AV_CODEC_ID_NONE ? codec.codec_tag : 0;
    return CodecText(plain);
}

const char* KindOf(AVMediaType type) {
    switch (type) {
    case AVMEDIA_TYPE_VIDEO:
        return "video";
    case AVMEDIA_TYPE_AUDIO:
        return "audio";
    case AVMEDIA_TYPE_SUBTITLE:
        return "subtitle";
    default:
        return "data";
    }
}

MediaTrack TrackOf(const AVStream& stream) {
    const AVCodecParameters& codec = *stream.codecpar;
    MediaTrack track;
    track.kind = KindOf(codec.codec_type);
    track.codec = StandardName(codec);
    track.language = Tag(stream.metadata, kLanguage);
    track.language.resize(std::min(track.language.size(), kLongestName));
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO) {
        track.width = codec.width;
        track.height = codec.height;
        track.interlaced = IsInterlaced(codec);
        const AVRational rate = FrameRateOf(stream);
        track.rate = {rate.num, rate.den};
    } else if (codec.codec_type == AVMEDIA_TYPE_AUDIO) {
        track.channels = codec.ch_layout.nb_channels;
        track.hertz = codec.sample_rate;
    }
    return track;
}

/// Collects texts as long as there is room.
class Texts {
public:
    explicit Texts(MediaDescription& description) : m_description(description) {}

    void Add(const std::string& path, std::string_view text) {
        const std::string_view kept = Cut(text);
        const std::size_t bytes = path.size() + kept.size();
        const bool hasRoom = m_description.texts.size() < kMostTexts &&
                             path.size() <= kLongestName && bytes <= m_room;
        m_description.isCut = m_description.isCut || !hasRoom || kept.size() < text.size();
        if (hasRoom) {
            m_room -= bytes;
            m_description.texts.push_back({path, std::string(kept)});
        }
    }

    void AddTags(const std::string& owner, const AVDictionary* tags, const char* except = "") {
        const AVDictionaryEntry* tag = nullptr;
        while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
            if (std::strcmp(tag->key, except) != 0) {
                Add(owner + "Tags/" + tag->key, tag->value);
            }
        }
    }

private:
    /// No character is cut in two.
    static std::string_view Cut(std::string_view text) {
        std::size_t size = std::min(text.size(), kLongestText);
        while (size < text.size() && size > 0 && (text[size] & 0xC0) == 0x80) {
            --size;
        }
        return text.substr(0, size);
    }

    MediaDescription& m_description;
    std::size_t m_room = kMostBytes;
};

/// "12.345000".
std::string SecondsText(std::int64_t duration) {
    const std::string fraction = std::to_string(AV_TIME_BASE + duration % AV_TIME_BASE);
    return std::to_string(duration / AV_TIME_BASE) + "." + fraction.substr(1);
}

void ReadTexts(const AVFormatContext& format, MediaDescription& description) {
    Texts texts(description);
    texts.Add("Container", format.iformat->long_name);
    if (format.duration > 0) {
        texts.Add("Duration", SecondsText(format.duration));
    }
    texts.AddTags("", format.metadata);
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const std::string number = i == 0 ? "" : "[" + std::to_string(i + 1) + "]";
        texts.AddTags("Track" + number + "/", format.streams[i]->metadata, kLanguage);
    }
}

} // namespace

MediaFault ReadDescription(MediaInput& input, MediaDescription& description) {
    Source source(input);
    Format format;
    if (MediaFault fault = source.Open(kContainers, format, true); !fault.empty()) {
        return fault;
    }
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        description.tracks.push_back(TrackOf(*format->streams[i]));
    }
    ReadTexts(*format, description);
    return {};
}

} // namespace nqp2::worker
