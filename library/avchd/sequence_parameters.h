// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

#include <cstdint>
#include <optional>

namespace nqp2::avchd {

/// What an H.264 sequence parameter set (ITU-T H.264, 7.3.2.1.1) says of the picture.
struct SequenceParameters {
    std::int32_t pixels = 0; ///< shown, a line
    std::int32_t lines = 0;  ///< shown
    std::int32_t bitDepth = 8;
    std::uint32_t shapeWidth = 0; ///< of a picture element; zeros when not told
    std::uint32_t shapeHeight = 0;
    std::uint32_t profile = 0;
    bool isFieldCoded = false;        ///< its pictures may be fields
    std::uint32_t unitsPerSecond = 0; ///< of time; zeros when not told
    std::uint32_t unitsPerTick = 0;   ///< of which a frame lasts two
};

/// Decodes a parameter set, its one header byte and the emulation bytes taken off. Nothing for one
/// that is cut off or impossible. What stands behind the timing is not read.
std::optional<SequenceParameters> DecodeSequenceParameters(Bytes unit);

} // namespace nqp2::avchd
