// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>
#include <optional>

namespace nqp2::worker {

/// Frames a second as a fraction.
struct FrameRate {
    std::int32_t numerator = 25;
    std::int32_t denominator = 1; ///< never 0
};

/// The rate text of clips ("59.94i", "25p"); fields are counted where the picture is interlaced.
/// "" for a rate that clips do not have.
CString FrameRateText(const FrameRate& rate, bool interlaced);

/// The frames a second of a rate text, without regard to letter case.
std::optional<FrameRate> FrameRateOf(const CString& text);

} // namespace nqp2::worker
