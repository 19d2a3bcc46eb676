// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace nqp2::fuzz {

/// Hands an input out in pieces; zeros and empty texts behind its end.
class ByteSource {
public:
    explicit ByteSource(std::span<const std::uint8_t> input) : m_left(input) {}

    [[nodiscard]] bool IsEmpty() const { return m_left.empty(); }

    std::uint8_t Byte() {
        const std::string_view byte = Take(1);
        return byte.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(byte.front());
    }
    /// Little-endian.
    std::uint32_t Number(std::size_t width) {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < width; ++i) {
            number |= std::uint32_t{Byte()} << 8 * i;
        }
        return number;
    }
    std::string_view Take(std::size_t count) {
        const auto taken = m_left.first(std::min(count, m_left.size()));
        m_left = m_left.subspan(taken.size());
        return {reinterpret_cast<const char*>(taken.data()), taken.size()};
    }
    /// A byte that chooses from the table, or that counts the bytes of a text of its own.
    template <std::size_t Count>
    std::string Text(const char* const (&table)[Count]) {
        constexpr std::uint8_t kOwn = 0x80;
        const std::uint8_t choice = Byte();
        return (choice & kOwn) == 0 ? table[choice % Count] : std::string(Take(choice & 0x3FU));
    }

private:
    std::span<const std::uint8_t> m_left;
};

} // namespace nqp2::fuzz
