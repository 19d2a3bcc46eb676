// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"

#include <cstddef>
#include <cstdint>

namespace nqp2::tool {

/// How a stream of a code type is cut and paced.
struct StreamForm {
    std::size_t unitSize = 0; ///< bytes of each access unit; 0: they are to be found in the stream
    std::int64_t rate = 0;    ///< frames a second are rate / scale
    std::int64_t scale = 1;
    eP2_VIDEO_STANDARD standard = VS_50I;
};

/// Throws Failure for a code type of which the name tells nothing.
StreamForm StreamFormOf(eCodeType type);

} // namespace nqp2::tool
