// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/bit_reader.h"

#include "avchd/limits.h"

namespace nqp2::avchd {

bool BitReader::Bit() {
    const std::size_t byte = m_position / 8;
    m_good = m_good && byte < m_bytes.size();
    if (!m_good) {
        return false;
    }
    const auto shift = static_cast<unsigned>(7 - m_position % 8);
    ++m_position;
    return (static_cast<unsigned>(m_bytes[byte]) >> shift & 1U) != 0;
}

std::uint32_t BitReader::Bits(int count) {
    std::uint32_t number = 0;
    for (int i = 0; i < count; ++i) {
        number = number << 1U | (Bit() ? 1U : 0U);
    }
    return number;
}

std::uint32_t BitReader::Unsigned() {
    int zeros = 0;
    while (!Bit()) {
        ++zeros;
        m_good = m_good && zeros <= kMaxLeadingZeros;
        if (!m_good) {
            return 0;
        }
    }
    const std::uint32_t rest = Bits(zeros);
    return m_good ? (std::uint32_t{1} << static_cast<unsigned>(zeros)) - 1 + rest : 0;
}

std::int32_t BitReader::Signed() {
    const std::uint32_t code = Unsigned();
    const auto half = static_cast<std::int32_t>(code / 2);
    return code % 2 != 0 ? half + 1 : -half;
}

} // namespace nqp2::avchd
