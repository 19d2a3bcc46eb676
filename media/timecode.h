// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Timecode arithmetic (SMPTE ST 12-1), shared by clips, edit lists and playlists.
namespace nqp2::media {

struct Timecode {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int frames = 0;
};

/// Two-digit fields separated by ":", "." or ";"; the frames field may have one digit.
/// Nothing for any other text, blanks included.
std::optional<Timecode> ParseTimecode(std::wstring_view text);

/// How a clip's timecode counts.
struct TimecodeRate {
    int nominal = 25;       ///< frame numbers a second
    int droppedNumbers = 0; ///< numbers skipped each minute but every tenth
};

/// The counting of a clip with this frame-rate text.
TimecodeRate ClipTimecodeRate(std::wstring_view frameRate, bool dropFrame);

/// The frame count of a timecode; fields are taken as they stand.
std::int32_t FrameCount(const Timecode& timecode, const TimecodeRate& rate);

/// A clip's start timecode as a frame count; 0 for a text that is no timecode.
std::int32_t ClipFrameCount(std::wstring_view text, std::wstring_view frameRate, bool dropFrame);

} // namespace nqp2::media
