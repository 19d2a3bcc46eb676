// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "avchd/recorder_data.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace nqp2::avchd {

/// What an H.264 sequence parameter set (ITU-T H.264, 7.3.2.1.1) says of the picture.
struct SequenceParameters {
    std::int32_t pixels = 0; ///< shown, a line
    std::int32_t lines = 0;  ///< shown
    std::int32_t bitDepth = 8;
    std::uint32_t shapeWidth = 0; ///< of a picture element; zeros when not told
    std::uint32_t shapeHeight = 0;
    std::uint32_t profile = 0;
    bool isFieldCoded = false;        ///< its pictures may be fields
    std::uint32_t unitsPerSecond = 0; ///< of time; zeros when not told
    std::uint32_t unitsPerTick = 0;   ///< of which a frame lasts two
};

/// The packets of a .MTS or .m2ts file.
inline constexpr std::size_t kPacketSize = 192;

/// What the beginning of an H.264 stream tells, up to its first picture.
struct StreamHead {
    std::optional<SequenceParameters> parameters;
    std::optional<media::CalendarTime> date;
    std::uint8_t zone = 0; ///< of the date, as recorders write it
    Recorder recorder;
    std::optional<RecordedTimecode> timecode;
    /// The first picture has begun behind its parameters: more bytes would tell nothing more.
    bool complete = false;
};

/// Decodes the beginning of a .MTS or .m2ts file, as much of it as there is. Recorders leave date
/// and timecode in the first picture's user data, as packs like those of DV tapes (IEC 61834-4).
StreamHead DecodeStreamHead(Bytes file, std::uint16_t videoPid);

/// The same of a bare H.264 stream (Annex B).
StreamHead DecodeVideoHead(Bytes video);

/// Decodes a parameter set, its one header byte and the emulation bytes taken off. Nothing for one
/// that is cut off or impossible. What follows the timing is not read.
std::optional<SequenceParameters> DecodeSequenceParameters(Bytes unit);

/// The bytes of one video stream out of the beginning of a .MTS or .m2ts file: its packets of 192
/// bytes (four in front of each ISO/IEC 13818-1 packet), the headers of the packetised stream taken
/// off. Starts with the first header; packets without sync, with errors or scrambled are passed
/// over. Never longer than `file`.
std::vector<std::uint8_t> VideoBytes(Bytes file, std::uint16_t pid);

} // namespace nqp2::avchd
