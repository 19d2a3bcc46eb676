// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/arena.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace nqp2::dom {
namespace {

constexpr std::size_t kKeptBlock = std::size_t{256} * 1024;
constexpr std::size_t kLargestBlock = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kAlignment = alignof(NodeName);
constexpr std::size_t kFirstNodes = std::size_t{64} * 1024 / sizeof(Node);
constexpr std::size_t kMostNodes = std::size_t{1024} * 1024 / sizeof(Node); ///< of one more block
constexpr std::size_t kMostReserved = kLargestBlock / sizeof(Node);

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

void Arena::Reserve(std::size_t bytes) {
    if (bytes > Left()) {
        AddBlock(bytes);
    }
}

void Arena::Clear() noexcept {
    m_used = 0;
    const bool keepsFirst = !m_blocks.empty() && m_blocks.front().size <= kKeptBlock;
    m_blocks.resize(keepsFirst ? 1 : 0);
    m_front = keepsFirst ? m_blocks.front().memory.get() : nullptr;
    m_back = keepsFirst ? m_front + m_blocks.front().size : nullptr;
    m_nextBlock = kFirstBlock;
}

void Arena::AddBlock(std::size_t atLeast) {
    const std::size_t size = std::max(m_nextBlock, atLeast);
    m_blocks.push_back({std::unique_ptr<std::byte[]>(new std::byte[size]), size});
    Use(m_blocks.back());
    m_nextBlock = std::min(m_nextBlock * 2, kLargestBlock); // however large that one had to be
}

void Arena::Use(const Block& block) {
    m_front = block.memory.get();
    m_back = m_front + block.size;
}

NodePool::~NodePool() {
    std::for_each(m_blocks.begin(), m_blocks.end(), Free);
}

void NodePool::Free(const Block& block) noexcept {
    ::operator delete(block.nodes);
}

void NodePool::AddBlock(std::size_t atLeast) {
    const std::size_t grown =
        m_blocks.empty() ? kFirstNodes : std::min(m_blocks.back().size * 2, kMostNodes);
    const std::size_t size = std::max(grown, atLeast);
    m_blocks.reserve(m_blocks.size() + 1);
    m_blocks.push_back({static_cast<Node*>(::operator new(size * sizeof(Node))), size, 0});
}

void NodePool::Reserve(std::size_t nodes) {
    const std::size_t wanted = std::min(nodes, kMostReserved);
    if (m_blocks.empty() || m_blocks.back().size - m_blocks.back().used < wanted) {
        AddBlock(wanted);
    }
}

Node& NodePool::Take() {
    Node* place = m_unused;
    if (place != nullptr) {
        m_unused = place->m_next;
    } else {
        if (m_blocks.empty() || m_blocks.back().used == m_blocks.back().size) {
            AddBlock(1);
        }
        Block& block = m_blocks.back();
        place = block.nodes + block.used++;
    }
    ++m_count;
    return *new (place) Node;
}

void NodePool::Clear() noexcept {
    m_unused = nullptr;
    m_count = 0;
    const bool keepsFirst = !m_blocks.empty() && m_blocks.front().size * sizeof(Node) <= kKeptBlock;
    const std::ptrdiff_t kept = keepsFirst ? 1 : 0;
    std::for_each(m_blocks.begin() + kept, m_blocks.end(), Free);
    m_blocks.erase(m_blocks.begin() + kept, m_blocks.end());
    if (keepsFirst) {
        m_blocks.front().used = 0;
    }
}

std::size_t NodePool::Recycle(const Block& block, Node*& unused) noexcept {
    std::size_t count = 0;
    for (std::size_t i = 0; i < block.used; ++i) {
        Node& node = block.nodes[i];
        if (node.type != NodeType::None && node.m_isAlive) {
            ++count;
            continue;
        }
        node.type = NodeType::None;
        node.m_next = unused;
        unused = &node;
    }
    return count;
}

void NodePool::KeepAlive() noexcept {
    m_unused = nullptr;
    m_count = 0;
    // The last block is where new nodes come from: it stays even when it is empty.
    const auto isEmpty = [&](const Block& block) {
        Node* unused = m_unused;
        const std::size_t count = Recycle(block, unused);
        const bool drop = count == 0 && &block != &m_blocks.back();
        if (drop) {
            Free(block);
        } else {
            m_unused = unused;
            m_count += count;
        }
        return drop;
    };
    std::size_t kept = 0;
    for (const Block& block : m_blocks) {
        if (!isEmpty(block)) {
            m_blocks[kept++] = block;
        }
    }
    m_blocks.resize(kept);
}

} // namespace nqp2::dom
