// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// Many short texts, one behind the other in blocks that never move.
class ByteStore {
public:
    using Place = std::uint32_t; ///< in units of kUnit bytes

    static constexpr std::size_t kUnit = 4;
    static constexpr std::size_t kBlockBytes = std::size_t{64} * 1024; ///< the longest text

    /// Room for that many bytes. Throws std::length_error when there is no place left.
    Place Take(std::size_t bytes);
    Place Add(std::string_view text);
    [[nodiscard]] char* At(Place place) {
        const std::size_t byte = std::size_t{place} * kUnit;
        return m_blocks[byte / kBlockBytes].get() + byte % kBlockBytes;
    }
    [[nodiscard]] std::string_view At(Place place, std::size_t bytes) const {
        return {const_cast<ByteStore*>(this)->At(place), bytes};
    }
    [[nodiscard]] std::size_t BytesUsed() const { return m_blocks.size() * kBlockBytes; }

private:
    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_used = kBlockBytes; ///< of the last block
};

} // namespace nqp2::mhl
