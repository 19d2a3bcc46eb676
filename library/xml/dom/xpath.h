// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/select.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::dom {

/// A libxml2 copy of a tree on which any XPath 1.0 expression can be evaluated; the results are
/// nodes of the tree itself. Made for one state of the tree.
class XPathView {
public:
    /// A copy of everything below `top`.
    XPathView(Node& top, const SelectionRule& rule);
    ~XPathView();
    XPathView(const XPathView&) = delete;
    XPathView& operator=(const XPathView&) = delete;

    [[nodiscard]] bool IsCurrent(const Node& top) const;
    /// The nodes that the expression selects, in document order. Throws _com_error (E_FAIL) for an
    /// expression that does not parse, needs an unbound prefix, takes too many steps or yields no
    /// node set.
    std::vector<Node*> Evaluate(Node& context, const std::string& expression,
                                const SelectionRule& rule);

private:
    struct Copy;
    const Node* m_top;
    std::uint64_t m_version;
    std::unique_ptr<Copy> m_copy;
};

} // namespace nqp2::dom
