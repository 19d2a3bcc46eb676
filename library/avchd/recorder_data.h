// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "media/dates.h"
#include "media/timecode.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/OleDateTime.h"

#include <array>
#include <cstdint>
#include <optional>

/// What recorders write down about a shot, in files and streams alike.
namespace nqp2::avchd {

struct RecordedTimecode {
    media::Timecode timecode;
    bool dropFrame = false;
};

/// Seven bytes of binary-coded decimals: century, year, month, day, hour, minute, second. Nothing
/// when they are no date. It is the local time where it was recorded.
std::optional<media::CalendarTime> DecodeDate(Bytes bytes);

/// The same as a date-time value; of status `invalid` for an impossible date.
COleDateTime MomentOf(const media::CalendarTime& date);

/// Minutes before UTC, of the byte that stands in front of such a date; nothing for a zone that is
/// not told.
std::optional<std::int16_t> ZoneOf(unsigned zone);

/// The same as text: "+02:00", or "".
CString ZoneText(unsigned zone);

/// What recorded a clip, in the numbers that its maker gave; zeros when not told.
struct Recorder {
    std::uint16_t maker = 0;
    std::uint16_t model = 0;
};

/// Four bytes as on tape (SMPTE ST 12-1), frames first. Nothing when all bits are set, which says
/// "not recorded", and when they are no timecode.
std::optional<RecordedTimecode> DecodeTimecode(Bytes bytes);

/// The clip identifier that some makers record (SMPTE ST 330), byte for byte.
using GlobalClipId = std::array<std::uint8_t, 32>;

/// The first bytes of `data` as an identifier; nothing when they are fewer or all zero.
std::optional<GlobalClipId> DecodeClipId(Bytes data);

/// The identifier's text: 64 digits in upper case.
CString ClipIdText(const GlobalClipId& id);

} // namespace nqp2::avchd
