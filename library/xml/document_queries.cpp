// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/document_queries.h"

#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/select.h"
#include "xml/query_text.h"

#include <string>

namespace nqp2::xml {

const dom::ParseError& LoadErrorOf(const IXMLDOMDocumentPtr& document) noexcept {
    static const dom::ParseError none = dom::OutOfMemory();
    return document != nullptr ? document->LastError() : none;
}

CString AttributeOf(const dom::Node& node, const CString& localName) {
    const std::string wanted = platform::Utf8FromText(localName.View());
    for (const dom::Node* each = node.FirstAttribute(); each != nullptr; each = each->Next()) {
        if (BaseName(*each) == wanted) {
            return platform::TextFromUtf8(each->Content());
        }
    }
    return {};
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

} // namespace nqp2::xml
