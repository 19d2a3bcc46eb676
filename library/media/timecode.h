// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

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

/// From this rate on timecodes in the metadata of cards number every second frame.
inline constexpr std::int32_t kHalfNumberedFrom = 50;

/// How a clip's timecode counts.
struct TimecodeRate {
    int nominal = 25;       ///< frame numbers a second
    int droppedNumbers = 0; ///< numbers skipped each minute but every tenth
};

/// The counting of a clip with this frame-rate text.
TimecodeRate ClipTimecodeRate(std::wstring_view frameRate, bool dropFrame);

/// Whether clips with this frame-rate text can count in drop frame.
bool CanDropFrames(std::wstring_view frameRate);

/// The frame count of a timecode; fields are taken as they are.
std::int32_t FrameCount(const Timecode& timecode, const TimecodeRate& rate);

/// A clip's start timecode as a frame count; 0 for a text that is no timecode.
std::int32_t ClipFrameCount(std::wstring_view text, std::wstring_view frameRate, bool dropFrame);

/// An edit list's timecode as a frame count: plain frames at denominator / numerator frames a
/// second (integer division; the edit unit is seconds a frame). At 50 and more the frames field
/// counts every second frame and is doubled. 0 for a text that is no timecode, an impossible unit
/// and a field out of its range.
std::int32_t EditFrameCount(std::wstring_view text, std::int32_t numerator,
                            std::int32_t denominator);

/// Frame numbers a second by which in and out points are written: 25 for the rate texts "50i" and
/// "25p", else the nominal rate of the text.
int NominalRate(std::wstring_view frameRate);

/// The inverse of FrameCount: the number that a frame has in timecode, which TimecodeText writes.
std::int64_t FrameNumber(std::int64_t frame, const TimecodeRate& rate);

/// A frame count as "%02d:%02d:%02d:%02d"; "--:--:--:--" for a negative one and from 24 hours on.
CString TimecodeText(std::int64_t frames, int nominal);

} // namespace nqp2::media
