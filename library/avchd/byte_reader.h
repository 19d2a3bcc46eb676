// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace nqp2::avchd {

using Bytes = std::span<const std::uint8_t>;

/// Reads big-endian numbers from foreign bytes. Reading beyond the end gives zeros and leaves the
/// reader bad for good, so that one question after a run of reads is enough.
class ByteReader {
public:
    explicit ByteReader(Bytes bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool IsGood() const { return m_good; }
    [[nodiscard]] std::size_t Left() const { return m_bytes.size(); }

    std::uint8_t U8() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint16_t U16() { return static_cast<std::uint16_t>(Number(2)); }
    std::uint32_t U32() { return Number(4); }

    /// The next `count` bytes; empty when fewer are left.
    Bytes Take(std::size_t count) {
        m_good = m_good && count <= m_bytes.size();
        if (!m_good) {
            m_bytes = {};
            return {};
        }
        const Bytes taken = m_bytes.first(count);
        m_bytes = m_bytes.subspan(count);
        return taken;
    }
    void Skip(std::size_t count) { Take(count); }

private:
    std::uint32_t Number(std::size_t width) {
        std::uint32_t number = 0;
        for (const std::uint8_t byte : Take(width)) {
            number = number << 8U | byte;
        }
        return number;
    }

    Bytes m_bytes;
    bool m_good = true;
};

/// The bytes from an address on; empty beyond the end.
inline Bytes From(Bytes bytes, std::uint64_t address) {
    return address < bytes.size() ? bytes.subspan(static_cast<std::size_t>(address)) : Bytes();
}

} // namespace nqp2::avchd
