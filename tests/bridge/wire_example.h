// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::bridge {

using Bytes = std::vector<unsigned char>;

/// An example of docs/wire.md.
struct WireExample {
    Bytes bytes;
    std::vector<std::size_t> counts; ///< where the counts and lengths of items stand in them
};

/// The example under the heading "### `title`"; throws when there is none.
WireExample ReadWireExample(std::string_view title);

/// Sets the four bytes of a count.
void SetCount(Bytes& bytes, std::size_t at, std::uint32_t count);

} // namespace nqp2::bridge
