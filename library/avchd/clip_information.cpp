// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"

#include "avchd/file_layout.h"

#include <algorithm>
#include <iterator>

namespace nqp2::avchd {
namespace {

enum ClipSection { kSequences, kPrograms, kTimeMap, kClipMarks, kClipExtension };

constexpr std::uint8_t kGlobalIdTag = 0xE2;

struct Channels {
    unsigned presentation;
    std::int32_t count;
};
constexpr Channels kPresentations[] = {{1, 1}, {3, 2}, {6, 6}};
constexpr std::uint8_t kAudioCodings[] = {0x03, 0x04, 0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86};

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
    const std::uint8_t coding = reader.U8();
    const unsigned presentation = static_cast<unsigned>(reader.U8()) >> 4U;
    if (std::find(std::begin(kAudioCodings), std::end(kAudioCodings), coding) ==
        std::end(kAudioCodings)) {
        return;
    }
    for (const Channels& row : kPresentations) {
        clip.audioChannels += row.presentation == presentation ? row.count : 0;
    }
}

void ReadStream(ByteReader& reader, ClipInformation& clip) {
    const std::uint16_t pid = reader.U16();
    const Bytes attributes = reader.Take(reader.U8());
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

bool ReadPrograms(Bytes section, ClipInformation& clip) {
    ByteReader reader(section);
    reader.Skip(1);
    const std::uint8_t programs = reader.U8();
    for (std::uint8_t i = 0; i < programs && reader.IsGood(); ++i) {
        reader.Skip(4 + 2); // first packet, identifier of the program's map
        const std::uint8_t streams = reader.U8();
        reader.Skip(1);
        for (std::uint8_t k = 0; k < streams && reader.IsGood(); ++k) {
            ReadStream(reader, clip);
        }
    }
    return reader.IsGood() && clip.video.codingType != 0;
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
    if (!sequences || !programs || !ReadSequences(*sequences, clip) ||
        !ReadPrograms(*programs, clip)) {
        return std::nullopt;
    }
    ReadExtension(ExtensionBlock(file, head->sections[kClipExtension], "CLEX"), clip);
    return clip;
}

} // namespace nqp2::avchd
