// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <string_view>
#include <unordered_map>

namespace nqp2::dom {

/// Finds attributes by name. Of the element that was asked about last it remembers them all once
/// they are many, so that who adds thousands to one element is not slowed down by each of them.
/// Asking about elements of many attributes in turn takes time in proportion to their number.
class AttributeIndex {
public:
    /// The first of that name, or null.
    Node* Find(const Node& element, std::string_view name);
    /// Takes notice of an attribute that was added behind the others.
    void Added(Node& attribute) noexcept;
    /// Forgets everything: names or nodes may move.
    void Clear() noexcept;

private:
    const Node* m_element = nullptr;
    std::unordered_map<std::string_view, Node*> m_byName;
};

} // namespace nqp2::dom
