// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/bell.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace nqp2::copy {

/// Bytes on their way from one reader to many.
class Block {
public:
    explicit Block(std::size_t capacity)
        : m_bytes(new char[capacity]), m_capacity(capacity) {} // not set to zero first

    [[nodiscard]] char* Data() { return m_bytes.get(); }
    [[nodiscard]] std::size_t Capacity() const { return m_capacity; }
    void SetSize(std::size_t size) { m_size = size; }
    [[nodiscard]] std::string_view Bytes() const { return {m_bytes.get(), m_size}; }

private:
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_capacity;
    std::size_t m_size = 0;
};
using BlockPtr = std::shared_ptr<Block>;

/// Bounds what is on its way, and uses the memory of large blocks again.
class BlockPool {
public:
    /// `bell`: rings when a block comes back; outlives the pool.
    BlockPool(std::size_t largeBlock, std::uint64_t mostBytes, Bell& bell)
        : m_large(largeBlock), m_most(mostBytes), m_bell(bell) {}

    /// Whether a block of that size may be taken: always when there is none on its way.
    [[nodiscard]] bool HasRoom(std::size_t size);
    /// Outlived by the pool; goes back with its last owner, in any thread.
    BlockPtr Take(std::size_t size);

private:
    void GiveBack(Block* block);

    std::size_t m_large;
    std::uint64_t m_most;
    Bell& m_bell;
    std::mutex m_lock;
    std::uint64_t m_onTheWay = 0;
    std::vector<std::unique_ptr<Block>> m_spare;
};

} // namespace nqp2::copy
