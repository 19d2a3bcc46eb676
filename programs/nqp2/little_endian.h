// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nqp2::tool {

/// The number in `width` bytes from `at` on; bytes behind the end count as 0.
inline std::uint32_t LittleEndian(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint32_t value = 0;
    for (std::size_t i = width; i > 0; --i) {
        const std::size_t index = at + i - 1;
        value =
            value << 8U | (index < bytes.size() ? static_cast<unsigned char>(bytes[index]) : 0U);
    }
    return value;
}

} // namespace nqp2::tool
