// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2Clip.h"

#include <string>

namespace nqp2::tool {

/// The clip's length as h:mm:ss:ff counted in whole frames of its nominal rate (30 for 29.97);
/// as "N frames" when the card names no known rate.
std::string LengthText(const _tag_P2Clip& clip);

/// The clip's true running time; 0 when the card names no known rate.
double RunningSeconds(const _tag_P2Clip& clip);

/// Seconds, rounded, as h:mm:ss.
std::string SecondsText(double seconds);

} // namespace nqp2::tool
