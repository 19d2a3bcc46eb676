// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/BStr.h"
#include "platform/CString.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"

#include <algorithm>
#include <cstddef>
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

/// Bounds the text that is taken from one document: elements that nest within each other could
/// multiply it without end. All values together may take no more than the document itself does.
class TextBudget {
public:
    /// At most `limit` bytes of UTF-8, however large the document is.
    TextBudget(const dom::Document& document, std::size_t limit)
        : m_left(std::min(limit, std::max(document.Content()->BytesUsed(), kAlwaysFree))) {}

    /// Throws std::length_error when that is more than is left.
    void Spend(std::size_t bytes) {
        if (bytes > m_left) {
            throw std::length_error("its values take more text than metadata may");
        }
        m_left -= bytes;
    }

private:
    /// So that a value of a small document may be asked for twice.
    static constexpr std::size_t kAlwaysFree = std::size_t{1} << 20;

    std::size_t m_left;
};

} // namespace nqp2::xml
