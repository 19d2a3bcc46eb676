// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/Guid.h"

#include <cstdint>

/// The worker's description of a camera file. A request sends it with the file title in `clipText1`
/// and the file's date text in `clipText2`.
struct NQP2BaseClipInfo {
    CString clipText1;       ///< file title in the request, clip name in the answer
    GUID identifier;         ///< of the material
    CString clipText2;       ///< date text
    std::int64_t value1 = 0; ///< frames in 1000 seconds
    std::int64_t value2 = 0; ///< readers use the low 32 bits
    std::int64_t value3 = 0; ///< readers use the low 32 bits
    CString codec;           ///< readers look for "DVSD"
    CString text1;           ///< frame rate, "59.94i"
    CString text2;           ///< aspect ratio, "16:9"
    CString text3;           ///< path of the video file
    CStringArray texts;      ///< readers take at most the first 8
    CString clipText3;       ///< user clip name
    std::int32_t value4 = 0; ///< height << 16 | width, in pixels
};
