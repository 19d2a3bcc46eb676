// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "avchd/recorder_data.h"
#include "avchd/video_format.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace nqp2::avchd {

/// What a clip information file (.CPI, .clpi) says of its clip.
struct ClipInformation {
    /// A stretch whose clock runs through, in 45 kHz ticks; the end is the first tick behind it.
    struct Stretch {
        std::uint32_t start = 0;
        std::uint32_t end = 0;
    };

    std::vector<Stretch> stretches; ///< at least one
    VideoStream video;              ///< the first video stream
    std::int32_t audioChannels = 0; ///< of all sound streams together
    std::optional<GlobalClipId> clipId;
    std::optional<RecordedTimecode> timecode; ///< of the first frame

    /// Frames at the rate; each stretch is rounded by itself.
    [[nodiscard]] std::int32_t Frames(const FrameRate& rate) const;
};

/// Decodes a clip information file. Nothing for one without sound head, sequences and programs,
/// and for a clip without video; a damaged extension is left out. The time map is never looked at.
std::optional<ClipInformation> DecodeClipInformation(Bytes file);

// What a clip information file tells that no record holds; what is damaged tells nothing.

/// The attributes of each stream, its coding type first.
std::vector<Bytes> StreamsOf(Bytes file);

Recorder RecorderOf(Bytes file);

/// How many bytes the stream has; 0 when not told. The beginning of the file is enough.
inline constexpr std::uint64_t kStreamSizeHead = 60;
std::uint64_t StreamSizeIn(Bytes file);

} // namespace nqp2::avchd
