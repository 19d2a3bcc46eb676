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
    if (rounded > Left()) {
        AddBlock(rounded);
    }
    void* const place = m_front;
    m_front += rounded;
    m_used += rounded;
    return place;
}

std::string_view Arena::Copy(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    if (text.size() > Left()) {
        AddBlock(text.size());
    }
    m_back -= text.size();
    m_used += text.size();
    std::memcpy(m_back, text.data(), text.size());
    return {reinterpret_cast<const char*>(m_back), text.size()};
}

void Arena::Clear() {
    m_used = 0;
    if (!m_blocks.empty()) {
        m_blocks.resize(1);
        Use(m_blocks.front());
    }
}

void Arena::AddBlock(std::size_t atLeast) {
    const std::size_t grown =
        m_blocks.empty() ? kFirstBlock : std::min(m_blocks.back().size * 2, kLargestBlock);
    const std::size_t size = std::max(grown, atLeast);
    m_blocks.push_back({std::unique_ptr<std::byte[]>(new std::byte[size]), size});
    Use(m_blocks.back());
}

void Arena::Use(const Block& block) {
    m_front = block.memory.get();
    m_back = m_front + block.size;
}

} // namespace nqp2::dom
