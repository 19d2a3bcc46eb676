// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace nqp2::dom {

/// Memory for the texts and names of one tree: handed out in order, given back all at once. Nothing
/// that lives in it has a destructor to run, so it is dropped at once and serves the next file.
/// Objects fill a block from its front, texts, which need no alignment, from its back.
class Arena {
public:
    /// Room for `bytes` bytes aligned for a NodeName. Throws std::bad_alloc.
    void* Allocate(std::size_t bytes);
    /// A copy of the text that lives as long as the arena's content.
    std::string_view Copy(std::string_view text);
    /// From here on so many bytes are handed out without asking the system. Throws std::bad_alloc.
    void Reserve(std::size_t bytes);

    /// Bytes handed out since the last Clear.
    [[nodiscard]] std::size_t Used() const { return m_used; }
    /// Drops all content; keeps the first block for what comes next, unless it is unusually large.
    void Clear() noexcept;

private:
    // One block holds a usual clip file's tree; a large tree doubles its way up.
    static constexpr std::size_t kFirstBlock = std::size_t{64} * 1024;
    struct Block {
        std::unique_ptr<std::byte[]> memory;
        std::size_t size = 0;
    };
    void AddBlock(std::size_t atLeast);
    void Use(const Block& block);

    std::vector<Block> m_blocks;
    [[nodiscard]] std::size_t Left() const { return static_cast<std::size_t>(m_back - m_front); }

    std::size_t m_nextBlock = kFirstBlock;
    std::byte* m_front = nullptr;
    std::byte* m_back = nullptr;
    std::size_t m_used = 0;
};

/// The nodes of one tree. They stay where they are; those that are given back serve again.
class NodePool {
public:
    NodePool() = default;
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;
    ~NodePool();

    /// Makes room for so many at once, up to 4 MiB: what is taken and given back in one piece, the
    /// next document finds at hand. Throws std::bad_alloc.
    void Reserve(std::size_t nodes);
    /// A node as new. Throws std::bad_alloc.
    Node& Take();
    /// Bytes of the nodes that are in use.
    [[nodiscard]] std::size_t Used() const { return m_count * sizeof(Node); }
    /// Takes all nodes back; keeps the first block, unless it is unusually large.
    void Clear() noexcept;

    /// Visits every node in use.
    template <class Visit>
    void ForEach(Visit visit) {
        for (const Block& block : m_blocks) {
            for (std::size_t i = 0; i < block.used; ++i) {
                if (block.nodes[i].type != NodeType::None) {
                    visit(block.nodes[i]);
                }
            }
        }
    }
    /// Takes back every node that is not marked as alive, and gives memory without any back.
    void KeepAlive() noexcept;

private:
    struct Block {
        Node* nodes = nullptr;
        std::size_t size = 0;
        std::size_t used = 0; ///< from the front; behind it is memory that never was a node
    };
    static void Free(const Block& block) noexcept;
    void AddBlock(std::size_t atLeast);
    /// Strings the unused nodes of a block together; returns how many are in use.
    std::size_t Recycle(const Block& block, Node*& unused) noexcept;

    std::vector<Block> m_blocks; ///< new nodes come from the last
    Node* m_unused = nullptr;
    std::size_t m_count = 0;
};

} // namespace nqp2::dom
