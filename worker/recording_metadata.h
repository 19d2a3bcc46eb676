// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/R8P2TransInfo.h"
#include "platform/CArray.h"
#include "platform/CString.h"
#include "worker/outcome.h"
#include "worker/recording_format.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::worker {

/// Where a file's essence lies, in bytes.
struct EssenceSpan {
    std::uint64_t start = 0;
    std::uint64_t size = 0;
};

/// All that the metadata of a recording say.
struct RecordedClip {
    const RecordingFormat* format = nullptr;
    CString name;
    CString userName;
    CString codec;
    std::int64_t frames = 0;
    std::uint32_t startTimecode = 0; ///< frame count
    bool dropFrame = false;
    bool isWide = true;
    std::int32_t bitsPerSample = 16;
    EssenceSpan video;
    std::vector<EssenceSpan> sound;
    CArray<stu_R8PRelationClipInfo> related;
    CString startDate; ///< ISO 8601 with zone
    CString endDate;
};

/// A start timecode that is counted as the recording counts: "10:00:00:00". Counts of more than a
/// day go round.
CString StartTimecodeText(const RecordingFormat& format, std::uint32_t frames, bool dropFrame);

/// Whether timecodes of the format can drop numbers.
bool CanDropFrames(const RecordingFormat& format);

/// The metadata file of a recording, with a fresh identifier.
Outcome MakeMetadata(const RecordedClip& clip, std::string& xml);

} // namespace nqp2::worker
