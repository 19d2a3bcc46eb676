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
    CString clipText1;
    GUID identifier;
    CString clipText2;
    std::int64_t value1 = 0;
    std::int64_t value2 = 0; ///< readers use the low 32 bits
    std::int64_t value3 = 0; ///< readers use the low 32 bits
    CString codec;           ///< readers look for "DVSD"
    CString text1;
    CString text2;
    CString text3;
    CStringArray texts; ///< readers take at most the first 8
    CString clipText3;
    std::int32_t value4 = 0;
};
