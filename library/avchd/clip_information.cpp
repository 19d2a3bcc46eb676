// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"

#include "avchd/codings.h"
#include "avchd/file_layout.h"
#include "avchd/stream_head.h"

namespace nqp2::avchd {
namespace {

enum ClipSection { kSequences, kPrograms, kTimeMap, kClipMarks, kClipExtension };

constexpr std::uint8_t kGlobalIdTag = 0xE2;

constexpr std::uint32_t kStreamAddress = 40; ///< of what tells of the stream
constexpr std::size_t kBeforePackets = 2 + 1 + 1 + 4 + 4;
constexpr std::uint32_t kRecorderAddress = 40; ///< in the recorder's block

/// Reads the stretches of one sequence of arrival times.
void ReadStretches(ByteReader& reader, std::vector<ClipInformation::Stretch>& stretches) {
    reader.Skip(4);
    const std::uint8_t count = reader.U8();
    reader.Skip(1);
    for (std::uint8_t i = 0; i < count && reader.IsGood(); ++i) {
        reader.Skip(2 + 4); // clock's stream, first packet
        ClipInformation::Stretch stretch;
        stretch.start = reader.U32();
        stretch.end = reader.U32();
        stretches.push_back(stretch);
    }
}

bool ReadSequences(Bytes section, ClipInformation& clip) {
    ByteReader reader(section);
    reader.Skip(1);
    const std::uint8_t count = reader.U8();
    for (std::uint8_t i = 0; i < count && reader.IsGood(); ++i) {
        ReadStretches(reader, clip.stretches);
    }
    return reader.IsGood() && !clip.stretches.empty();
}

void AddAudio(Bytes attributes, ClipInformation& clip) {
    ByteReader reader(attributes);
    const Coding* const coding = CodingOf(reader.U8());
    const unsigned presentation = static_cast<unsigned>(reader.U8()) >> 4U;
    if (coding != nullptr && coding->kind == StreamKind::Audio) {
        clip.audioChannels += ChannelsOf(presentation);
    }
}

void AddStream(std::uint16_t pid, Bytes attributes, ClipInformation& clip) {
    ByteReader videoReader(attributes);
    VideoStream video = ReadVideoAttributes(videoReader);
    if (video.codingType == 0) {
        AddAudio(attributes, clip);
    } else if (clip.video.codingType == 0) {
        video.pid = pid;
        video.aspect = static_cast<std::uint8_t>(videoReader.U8() >> 4U);
        clip.video = video;
    }
}

/// Calls `take` with each stream's identifier and attributes; false when the section is damaged.
template <class Take>
bool ReadPrograms(Bytes section, const Take& take) {
    ByteReader reader(section);
    reader.Skip(1);
    const std::uint8_t programs = reader.U8();
    for (std::uint8_t i = 0; i < programs && reader.IsGood(); ++i) {
        reader.Skip(4 + 2); // first packet, identifier of the program's map
        const std::uint8_t streams = reader.U8();
        reader.Skip(1);
        for (std::uint8_t k = 0; k < streams && reader.IsGood(); ++k) {
            const std::uint16_t pid = reader.U16();
            take(pid, reader.Take(reader.U8()));
        }
    }
    return reader.IsGood();
}

void ReadExtension(Bytes block, ClipInformation& clip) {
    ByteReader reader(MakersItem(block, kGlobalIdTag));
    clip.clipId = DecodeClipId(reader.Take(GlobalClipId().size()));
    clip.timecode = DecodeTimecode(reader.Take(4));
}

} // namespace

std::int32_t ClipInformation::Frames(const FrameRate& rate) const {
    std::int32_t frames = 0;
    for (const Stretch& stretch : stretches) {
        frames = AddFrames(frames, FramesBetween(stretch.start, stretch.end, rate));
    }
    return frames;
}

std::optional<ClipInformation> DecodeClipInformation(Bytes file) {
    const std::optional<FileHead> head = DecodeHead(file, "HDMV");
    if (!head) {
        return std::nullopt;
    }
    const std::optional<Bytes> sequences = NeededSection(file, head->sections[kSequences]);
    const std::optional<Bytes> programs = NeededSection(file, head->sections[kPrograms]);
    ClipInformation clip;
    const auto add = [&](std::uint16_t pid, Bytes attributes) { AddStream(pid, attributes, clip); };
    if (!sequences || !programs || !ReadSequences(*sequences, clip) ||
        !ReadPrograms(*programs, add) || clip.video.codingType == 0) {
        return std::nullopt;
    }
    ReadExtension(ExtensionBlock(file, head->sections[kClipExtension], "CLEX"), clip);
    return clip;
}

std::vector<Bytes> StreamsOf(Bytes file) {
    std::vector<Bytes> streams;
    const std::optional<FileHead> head = DecodeHead(file, "HDMV");
    ReadPrograms(head ? OptionalSection(file, head->sections[kPrograms]) : Bytes(),
                 [&](std::uint16_t /*pid*/, Bytes attributes) { streams.push_back(attributes); });
    return streams;
}

Recorder RecorderOf(Bytes file) {
    const std::optional<FileHead> head = DecodeHead(file, "HDMV");
    const Bytes block =
        head ? ExtensionBlock(file, head->sections[kClipExtension], "CLEX") : Bytes();
    ByteReader reader(OptionalSection(block, kRecorderAddress));
    Recorder recorder;
    recorder.maker = reader.U16();
    recorder.model = reader.U16();
    return recorder;
}

std::uint64_t StreamSizeIn(Bytes file) {
    const std::optional<FileHead> head = DecodeHead(file, "HDMV");
    ByteReader reader(head ? OptionalSection(file, kStreamAddress) : Bytes());
    reader.Skip(kBeforePackets);
    return std::uint64_t{reader.U32()} * kPacketSize;
}

} // namespace nqp2::avchd
