// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "NQP2ParserU/CString.h"

#include <cstdint>
#include <vector>

namespace nqp2::avchd {

/// A mark of a playlist with all that the recorder wrote beside it; "" where it did not.
struct ShotMark {
    std::uint32_t item = 0; ///< index of the play item
    std::uint32_t time = 0; ///< position in the item's clip, 45 kHz ticks
    std::uint16_t maker = 0;
    std::uint16_t model = 0;
    CString date; ///< of the recording, with its zone: "2024-05-17T06:12:03+02:00"
    CString name; ///< of the shot
    CString creator;
    CString serialNo;
    CString shooter;
    CString start; ///< of the shot, as `date`
    CString end;
};

/// The marks of a playlist, in their order; what is damaged is left out.
std::vector<ShotMark> DecodeMarks(Bytes file);

/// The name under which a playlist goes; "" when it has none.
CString PlaylistName(Bytes file);

} // namespace nqp2::avchd
