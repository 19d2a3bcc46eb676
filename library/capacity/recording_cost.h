// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"

#include <cstdint>

/// What a recording costs on a card: video bytes a frame by code type and standard, four audio
/// channels, and a fixed overhead. All sizes in bytes; sums and products saturate at 64 bits.
namespace nqp2::capacity {

struct RecordingCost {
    std::int64_t videoBytes = 0; ///< a frame; 0 for a code type without a frame size
    std::int64_t audioBytes = 0; ///< a frame, all four channels
    std::int64_t headerBytes = 0;
    std::int64_t overhead = 0; ///< a recording, header included

    /// Bytes that a recording of that many frames takes.
    [[nodiscard]] std::int64_t Space(std::int64_t frames) const;
    /// Whether such a recording fits. One whose bytes no number can tell fits nowhere.
    [[nodiscard]] bool Fits(std::int64_t frames, std::int64_t freeBytes) const;
    /// Frames that fit in that many bytes; zero or negative below the overhead: kept.
    [[nodiscard]] std::int64_t Frames(std::int64_t space) const;
};

/// `wideAudio`: 24-bit audio instead of 16.
RecordingCost CostOf(eCodeType codeType, bool wideAudio, eP2_VIDEO_STANDARD standard);

/// What a video file may grow to.
struct FileLimit {
    std::int64_t frames =
        0;                 ///< the first count that reaches the limit, not the last below it: kept
    std::int64_t size = 0; ///< space of those frames
};

/// Zero frames and size 0 for a code type without a frame size.
FileLimit LimitOfFile(const RecordingCost& cost);

} // namespace nqp2::capacity
