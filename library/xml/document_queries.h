// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/BStr.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DomPointers.h"
#include "xml/dom/document.h"
#include "xml/dom/path_walk.h"

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

/// Questions that the document classes and the readers of metadata ask in the same way, between the
/// interface's wide text and the tree's UTF-8. A null document answers nothing.
namespace nqp2::xml {

std::string PathOf(const _bstr_t& xpath);
CString TextOf(const dom::Node& node);

/// Why the document's last load failed. A null document is one that there was no memory for.
const dom::ParseError& LoadErrorOf(const IXMLDOMDocumentPtr& document) noexcept;

/// The attribute of that local name; "" when there is none.
std::string_view AttributeOf(const dom::Node& node, std::string_view localName);
CString AttributeOf(const dom::Node& node, const CString& localName);
/// The first child element of that name, or null.
const dom::Node* ChildOf(const dom::Node& node, std::string_view name);

/// Throw _com_error for a path that cannot be evaluated.
IXMLDOMNodePtr NodeAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath);
/// Null when nothing is selected.
IXMLDOMNodeListPtr NodesAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath);
/// Among the selected elements the first whose child NAME has exactly that text.
IXMLDOMNodePtr ParamNodeAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath,
                           const CString& name);

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
    void Spend(std::size_t bytes);

private:
    static constexpr std::size_t kNotCounted = 0; // the least that may be taken is more

    /// Counted once, for the document that has values enough.
    std::size_t Most();

    const dom::Document& m_document;
    std::size_t m_limit;
    std::size_t m_spent = 0;
    std::size_t m_most = kNotCounted;
};

/// The values of one document behind a fixed set of paths below one base path, gathered in one
/// pass. Each is the first node, in document order, that base and path select: just what asking
/// path by path would give.
class DocumentValues {
public:
    /// `document` must stay unchanged, and with `budget` outlive this object.
    DocumentValues(const dom::Document& document, std::string_view base, const dom::PathSet& paths,
                   TextBudget& budget);

    /// Whether the base path selects anything.
    [[nodiscard]] bool HasBase() const { return !m_bases.empty(); }
    /// The node behind the path of that index in the set, or null.
    [[nodiscard]] dom::Node* Find(std::size_t path) const { return m_nodes[path]; }
    /// The text of such a node in UTF-8, spent from the budget; "" for null. `scratch` may come to
    /// hold it, see dom::Text.
    std::string_view Text(const dom::Node* node, std::string& scratch) const;
    /// Every node that a path below the base selects, in document order.
    [[nodiscard]] std::vector<dom::Node*> All(std::string_view below) const;

private:
    const dom::Document& m_document;
    std::string_view m_base;
    TextBudget& m_budget;
    std::vector<dom::Node*> m_nodes; ///< by path
    std::vector<dom::Node*> m_bases;
};

} // namespace nqp2::xml
