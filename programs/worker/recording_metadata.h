// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "worker/recording_format.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::worker {

/// Where a file's essence lies, in bytes.
struct EssenceSpan {
    std::uint64_t start = 0;
    std::uint64_t size = 0;
};

/// Another clip of the same shot.
struct RelatedClip {
    CString name;
    GUID identifier;
    CString serialNo; ///< of its card
};

struct Relations {
    std::optional<RelatedClip> top; ///< the first one
    std::optional<RelatedClip> previous;
    std::optional<RelatedClip> next;
    std::optional<std::int64_t> offsetInShot; ///< frames of the clips before, where that is known
};

/// All that the metadata of a recording say.
struct RecordedClip {
    const RecordingFormat* format = nullptr;
    CString name;
    GUID identifier;
    CString userName;
    CString codec;
    std::int64_t frames = 0;
    std::int64_t startTimecode = 0; ///< frame count
    bool dropFrame = false;
    bool isWide = true;
    std::int32_t bitsPerSample = 16;
    EssenceSpan video;
    std::vector<EssenceSpan> sound;
    Relations relations;
    CString startDate; ///< ISO 8601 with zone
    CString endDate;
};

/// A start timecode that is counted as the recording counts: "10:00:00:00". Counts of more than a
/// day go round.
CString StartTimecodeText(const RecordingFormat& format, std::int64_t frames, bool dropFrame);

/// Whether timecodes of the format can drop numbers.
bool CanDropFrames(const RecordingFormat& format);

/// The metadata file of a recording. Fails for texts that XML cannot hold.
std::string MakeMetadata(const RecordedClip& clip);

} // namespace nqp2::worker
