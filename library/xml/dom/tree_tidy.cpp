// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A tree that is edited on and on takes memory for what is alive in it, and not for its history.

#include "xml/dom/tree.h"

#include <exception>
#include <utility>

namespace nqp2::dom {

void Tree::MarkBelow(Node& top) noexcept {
    for (Node* each = &top; each != nullptr; each = NextInOrder(*each, top)) {
        each->m_isAlive = true;
        for (Node* child = each->FirstAttribute(); child != nullptr; child = child->Next()) {
            child->m_isAlive = true;
        }
    }
}

void Tree::MarkAlive() noexcept {
    m_nodes.ForEach([](Node& node) { node.m_isAlive = false; });
    MarkBelow(m_document);
    m_nodes.ForEach([](Node& node) {
        if (!node.m_isAlive && node.m_holders > 0) {
            MarkBelow(Top(node));
        }
    });
}

/// Copies all that the nodes need into fresh memory, where that is worth it.
void Tree::MoveTexts() {
    std::size_t needed = 0;
    const auto isNamed = [](const Node& node) { return node.m_name != &kNoName; };
    m_nodes.ForEach([&](const Node& node) {
        if (isNamed(node)) {
            node.m_name->moved = nullptr;
        }
    });
    m_nodes.ForEach([&](const Node& node) {
        needed += node.Content().size();
        if (isNamed(node) && node.m_name->moved == nullptr) {
            node.m_name->moved = node.m_name;
            needed += sizeof(NodeName) + node.Name().size() + node.Uri().size();
        }
    });
    if (m_texts.Used() < needed * 2 + kTidyStep) {
        return;
    }
    Arena fresh;
    fresh.Reserve(needed); // nothing fails from here on
    const Arena old = std::exchange(m_texts, std::move(fresh));
    m_known.fill(nullptr);
    m_lastUri = {};
    m_nodes.ForEach([&](Node& node) {
        if (!node.TakesChildren()) {
            Hold(node, node.Content());
        }
        if (isNamed(node)) {
            if (node.m_name->moved == node.m_name) {
                node.m_name->moved = &KeepName(node.Name(), node.Uri());
            }
            node.m_name = node.m_name->moved;
        }
    });
}

void Tree::Tidy() noexcept {
    if (BytesUsed() < m_tidyAt) {
        return;
    }
    m_queries.LetGo();
    m_attributes.Clear();
    ++m_version; // what was found in the tree is to be looked for again
    MarkAlive();
    m_nodes.KeepAlive();
    try {
        MoveTexts();
    } catch (const std::exception&) {
        // No memory to make more of: it stays as it is, and is tried again later.
    }
    m_tidyAt = BytesUsed() * 2 + kTidyStep;
}

} // namespace nqp2::dom
