// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/document_queries.h"

#include "platform/unicode.h"
#include "xml/dom/select.h"

#include <algorithm>
#include <stdexcept>

namespace nqp2::xml {
namespace {

constexpr std::size_t kRepeatedText = std::size_t{512} * 1024; ///< may be asked for twice

} // namespace

std::string PathOf(const _bstr_t& xpath) {
    return platform::Utf8FromText(xpath.Text().View());
}

CString TextOf(const dom::Node& node) {
    std::string scratch;
    return platform::TextFromUtf8(dom::Text(node, scratch));
}

const dom::ParseError& LoadErrorOf(const IXMLDOMDocumentPtr& document) noexcept {
    static const dom::ParseError none = dom::OutOfMemory();
    return document != nullptr ? document->LastError() : none;
}

std::string_view AttributeOf(const dom::Node& node, std::string_view localName) {
    const dom::Node* each = node.FirstAttribute();
    while (each != nullptr && BaseName(*each) != localName) {
        each = each->Next();
    }
    return each != nullptr ? each->Content() : std::string_view();
}

CString AttributeOf(const dom::Node& node, const CString& localName) {
    return platform::TextFromUtf8(AttributeOf(node, platform::Utf8FromText(localName.View())));
}

const dom::Node* ChildOf(const dom::Node& node, std::string_view name) {
    const dom::Node* each = node.FirstChild();
    while (each != nullptr && (each->type != dom::NodeType::Element || each->Name() != name)) {
        each = each->Next();
    }
    return each;
}

IXMLDOMNodePtr NodeAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath) {
    return document != nullptr ? document->SelectSingle(PathOf(xpath)) : nullptr;
}

IXMLDOMNodeListPtr NodesAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath) {
    IXMLDOMNodeListPtr list = document != nullptr ? document->SelectNodes(PathOf(xpath)) : nullptr;
    return list != nullptr && list->Length() > 0 ? list : nullptr;
}

IXMLDOMNodePtr ParamNodeAt(const IXMLDOMDocumentPtr& document, const _bstr_t& xpath,
                           const CString& name) {
    const IXMLDOMNodeListPtr list = NodesAt(document, xpath);
    for (std::size_t i = 0; list != nullptr && i < list->Length(); ++i) {
        IXMLDOMNodePtr item = list->Item(i);
        const dom::Node* const nameNode = dom::SelectFirst(*item, "NAME");
        if (nameNode != nullptr && TextOf(*nameNode) == name) {
            return item;
        }
    }
    return nullptr;
}

void TextBudget::Spend(std::size_t bytes) {
    m_spent += bytes;
    if (m_spent > kRepeatedText && m_spent > Most()) {
        throw std::length_error("its values take more text than metadata may");
    }
}

std::size_t TextBudget::Most() {
    if (m_most == kNotCounted) {
        const dom::Node* const root = m_document.Content()->Root();
        std::string scratch;
        const std::size_t text = root != nullptr ? dom::Text(*root, scratch).size() : 0;
        m_most = std::min(m_limit, text + kRepeatedText);
    }
    return m_most;
}

DocumentValues::DocumentValues(const dom::Document& document, std::string_view base,
                               const dom::PathSet& paths, TextBudget& budget)
    : m_document(document), m_base(base), m_budget(budget), m_nodes(paths.Size()),
      m_bases(paths.FindBehind(base, document.Content()->DocumentNode(), m_nodes)) {}

std::string_view DocumentValues::Text(const dom::Node* node, std::string& scratch) const {
    const std::string_view text = node != nullptr ? dom::Text(*node, scratch) : std::string_view();
    m_budget.Spend(text.size());
    return text;
}

std::vector<dom::Node*> DocumentValues::All(std::string_view below) const {
    return m_bases.size() == 1 ? dom::SelectAll(*m_bases.front(), below)
                               : dom::SelectAll(m_document.Content()->DocumentNode(),
                                                std::string(m_base).append("/").append(below));
}

} // namespace nqp2::xml
