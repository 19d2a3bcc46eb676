// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// LPCM as transport streams of discs and AVCHD have it: a head of four bytes before the samples,
/// which are big-endian; a channel of silence where their number is odd.
namespace nqp2::worker::rewrap {

struct LpcmFormat {
    std::int32_t channels = 0;
    std::int32_t bits = 0; ///< 16 or 24
    [[nodiscard]] bool operator==(const LpcmFormat& other) const = default;
};

/// What the head tells; no channels when it is none, of another sampling rate than 48 kHz or of
/// more than two channels.
LpcmFormat LpcmFormatOf(std::string_view unit);

/// Makes `samples` the unit's samples, little-endian. False unless they are whole.
bool UnpackLpcm(std::string_view unit, const LpcmFormat& format, std::string& samples);

} // namespace nqp2::worker::rewrap
