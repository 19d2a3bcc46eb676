// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/clip_order.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstdint>
#include <string>

namespace nqp2::tool {

class Console;

/// Prints one line a clip, what a person on set looks for, on standard output, and their number
/// and running time on standard error.
void PrintClipTable(Console& console, const ClipOrder& clips);

/// A length as h:mm:ss:ff counted in whole frames of the rate's nominal value (30 for "29.97p");
/// as "N frames" when the rate is none that is known.
std::string LengthText(std::int32_t frames, const CString& rate);
/// The clip's length at its own rate.
std::string LengthText(const _tag_P2Clip& clip);

/// The clip's true running time; 0 when the card names no known rate.
double RunningSeconds(const _tag_P2Clip& clip);

/// Seconds, rounded, as h:mm:ss.
std::string SecondsText(double seconds);

} // namespace nqp2::tool
