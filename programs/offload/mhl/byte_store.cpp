// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/byte_store.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace nqp2::mhl {

ByteStore::Place ByteStore::Take(std::size_t bytes) {
    bytes = std::max<std::size_t>(bytes, 1); // also an empty text has a place in a block
    if (bytes > kBlockBytes) {
        throw std::length_error("a text is too long");
    }
    if (bytes > kBlockBytes - m_used) {
        constexpr std::size_t kMostBlocks =
            (std::size_t{std::numeric_limits<Place>::max()} + 1) / (kBlockBytes / kUnit);
        if (m_blocks.size() == kMostBlocks) {
            throw std::length_error("there are too many texts");
        }
        m_blocks.emplace_back(new char[kBlockBytes]);
        m_used = 0;
    }
    const std::size_t byte = (m_blocks.size() - 1) * kBlockBytes + m_used;
    m_used += (bytes + kUnit - 1) / kUnit * kUnit;
    return static_cast<Place>(byte / kUnit);
}

ByteStore::Place ByteStore::Add(std::string_view text) {
    const Place place = Take(text.size());
    if (!text.empty()) {
        std::copy(text.begin(), text.end(), At(place));
    }
    return place;
}

} // namespace nqp2::mhl
