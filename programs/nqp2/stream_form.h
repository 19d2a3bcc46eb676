// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/FrameRate.h"

#include <cstddef>
#include <cstdint>

namespace nqp2::tool {

/// How a stream of a code type is cut and paced.
struct StreamForm {
    std::size_t unitSize = 0; ///< bytes of each access unit; 0: they are to be found in the stream
    FrameRate rate;
};

/// Throws Failure for a code type of which the name tells nothing.
StreamForm StreamFormOf(eCodeType type);

} // namespace nqp2::tool
