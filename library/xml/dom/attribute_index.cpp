// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/attribute_index.h"

#include <exception>

namespace nqp2::dom {

Node* AttributeIndex::Find(const Node& element, std::string_view name) {
    constexpr int kMany = 32;
    int count = 0;
    for (Node* each = element.FirstAttribute(); each != nullptr && m_element != &element;
         each = each->Next()) {
        if (each->Name() == name) {
            return each;
        }
        if (++count == kMany) {
            Clear();
            for (Node* all = element.FirstAttribute(); all != nullptr; all = all->Next()) {
                m_byName.emplace(all->Name(), all);
            }
            m_element = &element;
        }
    }
    if (m_element != &element) {
        return nullptr;
    }
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? nullptr : found->second;
}

void AttributeIndex::Added(Node& attribute) noexcept {
    if (attribute.parent != m_element) {
        return;
    }
    try {
        m_byName.emplace(attribute.Name(), &attribute);
    } catch (const std::exception&) {
        Clear(); // without memory for an index the element is looked through
    }
}

void AttributeIndex::Clear() noexcept {
    m_element = nullptr;
    m_byName.clear();
}

} // namespace nqp2::dom
