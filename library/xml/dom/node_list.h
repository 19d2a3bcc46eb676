// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/tree.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace nqp2::dom {

/// What a query selected: a snapshot that survives any change of the tree, with an iterator.
class NodeList {
public:
    NodeList(std::shared_ptr<Tree> tree, std::vector<Node*> nodes)
        : m_tree(std::move(tree)), m_nodes(std::move(nodes)) {
        for (Node* const node : m_nodes) {
            ++node->m_holders;
        }
    }
    ~NodeList() {
        for (Node* const node : m_nodes) {
            --node->m_holders;
        }
    }
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;

    [[nodiscard]] std::size_t Length() const { return m_nodes.size(); }
    /// The node at `index`, or null beyond the end. Does not move the iterator.
    [[nodiscard]] std::shared_ptr<Node> Item(std::size_t index) const {
        return index < m_nodes.size() ? m_tree->Share(m_nodes[index]) : nullptr;
    }
    /// The next node, or null at the end.
    std::shared_ptr<Node> Next() {
        std::shared_ptr<Node> node = Item(m_next);
        m_next += node != nullptr ? 1U : 0U;
        return node;
    }

private:
    std::shared_ptr<Tree> m_tree;
    std::vector<Node*> m_nodes;
    std::size_t m_next = 0;
};

} // namespace nqp2::dom
