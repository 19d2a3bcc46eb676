// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/block_pool.h"

#include <utility>

namespace nqp2::copy {

bool BlockPool::HasRoom(std::size_t size) {
    const std::lock_guard guard(m_lock);
    return m_onTheWay == 0 || m_onTheWay + size <= m_most;
}

BlockPtr BlockPool::Take(std::size_t size) {
    std::unique_ptr<Block> block;
    {
        const std::lock_guard guard(m_lock);
        if (size == m_large && !m_spare.empty()) {
            block = std::move(m_spare.back());
            m_spare.pop_back();
        } else if (size == m_large) {
            m_spare.reserve(m_spare.capacity() + 1); // so that giving back needs no memory
        }
    }
    if (block == nullptr) {
        block = std::make_unique<Block>(size);
    }
    {
        const std::lock_guard guard(m_lock);
        m_onTheWay += size;
    }
    return {block.release(), [this](Block* used) { GiveBack(used); }};
}

void BlockPool::GiveBack(Block* block) {
    std::unique_ptr<Block> owned(block);
    {
        const std::lock_guard guard(m_lock);
        m_onTheWay -= owned->Capacity();
        if (owned->Capacity() == m_large && m_spare.size() < m_spare.capacity()) {
            m_spare.push_back(std::move(owned));
        }
    }
    m_bell.Ring();
}

} // namespace nqp2::copy
