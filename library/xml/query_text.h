// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/CString.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>

/// The border between the interface's wide text and the tree's UTF-8.
namespace nqp2::xml {

inline std::string PathOf(const _bstr_t& xpath) {
    return platform::Utf8FromText(xpath.Text().View());
}

inline CString TextOf(const dom::Node& node) {
    std::string scratch;
    return platform::TextFromUtf8(dom::Text(node, scratch));
}

/// Bounds the text that is taken from one document. Elements that nest within each other could
/// multiply it without end: all values together may take no more than the document has, but for a
/// little that may be asked for twice.
class TextBudget {
public:
    /// At most `limit` bytes of UTF-8, however large the document is.
    explicit TextBudget(const dom::Document& document,
                        std::size_t limit = std::numeric_limits<std::size_t>::max())
        : m_document(document), m_limit(limit) {}

    /// Throws std::length_error when the text goes beyond what may be taken.
    void Spend(std::size_t bytes) {
        m_spent += bytes;
        if (m_spent > kRepeated && m_spent > Most()) {
            throw std::length_error("its values take more text than metadata may");
        }
    }

private:
    static constexpr std::size_t kRepeated = std::size_t{512} * 1024;
    static constexpr std::size_t kNotCounted = 0; // the least that may be taken is more

    /// Counted once, for the document that has values enough.
    std::size_t Most() {
        if (m_most == kNotCounted) {
            const dom::Node* const root = m_document.Content()->Root();
            std::string scratch;
            const std::size_t text = root != nullptr ? dom::Text(*root, scratch).size() : 0;
            m_most = std::min(m_limit, text + kRepeated);
        }
        return m_most;
    }

    const dom::Document& m_document;
    std::size_t m_limit;
    std::size_t m_spent = 0;
    std::size_t m_most = kNotCounted;
};

} // namespace nqp2::xml
