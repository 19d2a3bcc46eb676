// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/NQXmlParser.h"

#include "xml/document_queries.h"
#include "xml/dom/node.h"
#include "xml/dom_guard.h"
#include "xml/query_text.h"

using nqp2::xml::DomGuarded;

int CNQXmlParser::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    if (m_bReady == 0) {
        return 0;
    }
    val = _variant_t();
    return DomGuarded(0, [&] {
        const IXMLDOMNodePtr node = nqp2::xml::NodeAt(m_pDoc, xpath);
        if (node == nullptr) {
            return bIgnoreMissing != 0 ? 1 : 0;
        }
        val = nqp2::xml::TextOf(*node);
        return 1;
    });
}

_variant_t CNQXmlParser::GetNodeVal(CString xpath, int bIgnoreMissing) {
    _variant_t value;
    if (GetNodeVal(_bstr_t(xpath), value, bIgnoreMissing) == 0) {
        value.vt = VT_NULL;
    }
    return value;
}

CString CNQXmlParser::GetNodeText(CString xpath, int bIgnoreMissing) {
    const _variant_t value = GetNodeVal(xpath, bIgnoreMissing);
    return value.Text();
}

CString CNQXmlParser::GetNodeAttribute(CString xpath, CString attribute) {
    return DomGuarded(CString(), [&] {
        const IXMLDOMNodePtr node = nqp2::xml::NodeAt(m_pDoc, _bstr_t(xpath));
        return node != nullptr ? nqp2::xml::AttributeOf(*node, attribute) : CString();
    });
}

CNQXmlParserNode CNQXmlParser::GetNode(_bstr_t xpath) {
    CNQXmlParserNode handle;
    handle.SetNode(nqp2::xml::NodeAt(m_pDoc, xpath));
    return handle;
}

CNQXmlParserNode CNQXmlParser::GetNodeList(_bstr_t xpath) {
    CNQXmlParserNode handle;
    handle.SetNodeList(nqp2::xml::NodesAt(m_pDoc, xpath));
    return handle;
}

CNQXmlParserNode CNQXmlParser::FindParamNode(_bstr_t xpath, CString name) {
    CNQXmlParserNode handle;
    handle.SetNode(nqp2::xml::ParamNodeAt(m_pDoc, xpath, name));
    return handle;
}
