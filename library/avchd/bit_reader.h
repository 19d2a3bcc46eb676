// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"

namespace nqp2::avchd {

/// Reads the bits of an H.264 unit (ITU-T H.264, 7.2 and 9.1), emulation bytes undone. Reading
/// beyond the end, and a number that no 32 bits hold, give zeros and leave the reader bad for good.
class BitReader {
public:
    explicit BitReader(Bytes bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool IsGood() const { return m_good; }
    bool Bit();
    /// Up to 32 bits.
    std::uint32_t Bits(int count);
    /// A number of variable length, without and with sign.
    std::uint32_t Unsigned();
    std::int32_t Signed();

private:
    Bytes m_bytes;
    std::size_t m_position = 0; ///< in bits
    bool m_good = true;
};

} // namespace nqp2::avchd
