// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FrameRate.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>

namespace nqp2 {

/// The rate with that text, without regard to letter case; null for a text that is none.
NQP2_API const FrameRate* FindFrameRate(const CString& text) noexcept;

/// The timecode of the frame that is `offset` frames behind the clip's first: "10:59:58:12", with
/// ";" before the frames where numbers are dropped. It numbers every frame; metadata number every
/// second one at 50 frames a second and more, and so does a P2 record's count, where the frames
/// field counts twice here. "" where the record does not tell it.
NQP2_API CString ClipTimecode(const _tag_P2Clip& clip, std::int64_t offset = 0) noexcept;

/// The timecode of a frame that is counted from midnight, at any rate of kFrameRates. After a day
/// it begins anew; ";" before the frames where numbers are dropped.
NQP2_API CString FrameTimecode(std::int64_t frame, const FrameRate& rate, bool dropFrame) noexcept;

/// The frame with that timecode, counted from midnight; -1 for a text that is none, or none at that
/// rate.
NQP2_API std::int64_t TimecodeFrame(const CString& text, const FrameRate& rate,
                                    bool dropFrame) noexcept;

/// A date text of a clip as ISO 8601 has it, with its own zone or else the one that is given:
/// "2005-02-01T08:58:44+08:00". Parts of a second are cut off. "" for a text that is no date.
NQP2_API CString IsoDate(const CString& date, std::int16_t zone = ClipTold::kNoZone) noexcept;

} // namespace nqp2
