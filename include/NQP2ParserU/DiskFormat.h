// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"

#include <cstdint>

namespace nqp2 {

/// What the first readable clip of a card tells about the card's format.
struct DiskFormat {
    eCodeType codeType = CT_DV25_50I;     ///< coarse: decided from the codec name alone
    eP2_VIDEO_STANDARD standard = VS_50I; ///< by the rate text; VS_50I for one that is unknown
    CString frameRate;                    ///< text as on the card, "59.94i"
    CString codec;                        ///< text as on the card
    CString editUnit;                     ///< text as on the card, "1001/30000"
    std::int32_t class50 = 0;             ///< 1: "AVC-I_1080/50i" of class 50
    bool found = false;                   ///< false: no clip file could be read
    CString failure; ///< why the card could not be read, in one sentence; "" when it could
};

} // namespace nqp2
