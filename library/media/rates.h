// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/FrameRate.h"

#include <string_view>

/// Questions to the one table of rates, kFrameRates.
namespace nqp2::media {

/// The rate with that text, without regard to letter case; null for a text that is none.
const FrameRate* FindRate(std::wstring_view text);

/// The clip rate nearest to that of a file, of that scan where there are both ("50i", "25p"); null
/// for a rate that clips do not have. Containers round.
const FrameRate* FindRate(const FrameRate& rate, bool interlaced);

/// Seconds a frame as clips and edit lists write them: "1001/30000".
CString EditUnitText(const FrameRate& rate);

} // namespace nqp2::media
