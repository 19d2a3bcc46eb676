// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "media/timecode.h"

#include <optional>

/// How recorders write moments down, in files and streams alike.
namespace nqp2::avchd {

/// Local time where it was recorded.
struct RecordedDate {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

struct RecordedTimecode {
    media::Timecode timecode;
    bool dropFrame = false;
};

/// Seven bytes of binary-coded decimals: century, year, month, day, hour, minute, second. Nothing
/// when they are no date.
std::optional<RecordedDate> DecodeDate(Bytes bytes);

/// Four bytes as on tape (SMPTE ST 12-1), frames first. Nothing when all bits are set, which says
/// "not recorded", and when they are no timecode.
std::optional<RecordedTimecode> DecodeTimecode(Bytes bytes);

} // namespace nqp2::avchd
