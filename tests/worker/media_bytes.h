// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// What tests of foreign media files make these of.
namespace nqp2::worker {

/// A host that cancels nothing.
inline const std::function<bool()> kGoesOn = [] { return true; };

/// The number in so many bytes, the lowest first.
template <std::integral Number>
std::string LittleEndian(Number value, std::size_t width = 4) {
    const auto bits = static_cast<std::uint64_t>(value);
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i) {
        bytes += static_cast<char>(i < sizeof(bits) ? bits >> (8 * i) : 0);
    }
    return bytes;
}

} // namespace nqp2::worker
