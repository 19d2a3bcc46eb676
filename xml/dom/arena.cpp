// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/arena.h"

#include <algorithm>
#include <cstring>

namespace nqp2::dom {
namespace {

// One block holds a usual clip file's tree; a large tree doubles its way up.
constexpr std::size_t kFirstBlock = std::size_t{64} * 1024;
constexpr std::size_t kLargestBlock = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kAlignment = alignof(std::max_align_t);

} // namespace

void* Arena::Allocate(std::size_t bytes) {
    const std::size_t rounded = (bytes + kAlignment - 1) / kAlignment * kAlignment;
    if (rounded > m_left) {
        AddBlock(rounded);
    }
    void* const place = m_next;
    m_next += rounded;
    m_left -= rounded;
    m_used += rounded;
    return place;
}

std::string_view Arena::Copy(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    void* const place = Allocate(text.size());
    std::memcpy(place, text.data(), text.size());
    return {static_cast<const char*>(place), text.size()};
}

void Arena::Clear() {
    m_used = 0;
    if (m_blocks.empty()) {
        return;
    }
    m_blocks.resize(1);
    m_next = m_blocks.front().memory.get();
    m_left = m_blocks.front().size;
}

void Arena::AddBlock(std::size_t atLeast) {
    const std::size_t grown =
        m_blocks.empty() ? kFirstBlock : std::min(m_blocks.back().size * 2, kLargestBlock);
    const std::size_t size = std::max(grown, atLeast);
    m_blocks.push_back({std::unique_ptr<std::byte[]>(new std::byte[size]), size});
    m_next = m_blocks.back().memory.get();
    m_left = size;
}

} // namespace nqp2::dom
