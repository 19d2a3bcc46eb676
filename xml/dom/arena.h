// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace nqp2::dom {

/// Memory of one tree: handed out in order, given back all at once. Nothing that lives in it has a
/// destructor to run, so a tree of any size is dropped at once and its memory serves the next file.
/// Objects fill a block from its front, texts, which need no alignment, from its back.
class Arena {
public:
    /// Room for `bytes` bytes aligned for any object. Throws std::bad_alloc.
    void* Allocate(std::size_t bytes);
    /// A copy of the text that lives as long as the arena's content.
    std::string_view Copy(std::string_view text);

    /// Bytes handed out since the last Clear.
    [[nodiscard]] std::size_t Used() const { return m_used; }
    /// Drops all content; keeps the first block for what comes next.
    void Clear();

private:
    struct Block {
        std::unique_ptr<std::byte[]> memory;
        std::size_t size = 0;
    };
    void AddBlock(std::size_t atLeast);
    void Use(const Block& block);

    std::vector<Block> m_blocks;
    [[nodiscard]] std::size_t Left() const { return static_cast<std::size_t>(m_back - m_front); }

    std::byte* m_front = nullptr;
    std::byte* m_back = nullptr;
    std::size_t m_used = 0;
};

} // namespace nqp2::dom
