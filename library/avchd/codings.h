// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace nqp2::avchd {

enum class StreamKind { Video, Audio, Subtitle };

/// How a stream is coded, by the format's number for that.
struct Coding {
    std::uint8_t type;
    StreamKind kind;
    const wchar_t* name; ///< as its own standard calls it
};

/// Null for a number that is none of them.
const Coding* CodingOf(std::uint8_t type);

/// The channels of a sound stream by its presentation code; 0 for a code that does not tell.
std::int32_t ChannelsOf(unsigned presentation);

/// Its samples a second in kHz by its sampling code; 0 for a code that does not tell.
std::int32_t SamplingOf(unsigned code);

} // namespace nqp2::avchd
