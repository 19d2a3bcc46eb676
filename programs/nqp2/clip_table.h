// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace nqp2::tool {

class Console;

/// Clips in the order in which they are shown; the records belong to the caller.
using ClipOrder = std::vector<const _tag_P2Clip*>;

/// The label of the card that a clip lies on.
using CardOfClip = std::function<std::string(const _tag_P2Clip& clip)>;

/// Prints one line a clip, what a person on set looks for, on standard output, and their number
/// and running time on standard error. `card`, where several are listed, tells a clip's.
void PrintClipTable(Console& console, const ClipOrder& clips, const CardOfClip& card = {});

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
