// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQXmlParser.h"

#include "platform/guard.h"
#include "xml/document_queries.h"
#include "xml/dom/node.h"

using nqp2::platform::ComGuarded;
using nqp2::platform::Guarded;

int CNQXmlParser::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    return Guarded(0, [&] {
        if (m_bReady == 0) {
            return 0;
        }
        val = _variant_t();
        const IXMLDOMNodePtr node = nqp2::xml::NodeAt(m_pDoc, xpath);
        if (node == nullptr) {
            return bIgnoreMissing != 0 ? 1 : 0;
        }
        val = nqp2::xml::TextOf(*node);
        return 1;
    });
}

_variant_t CNQXmlParser::GetNodeVal(CString xpath, int bIgnoreMissing) {
    return Guarded(_variant_t::Null(), [&] {
        _variant_t value;
        return GetNodeVal(_bstr_t(xpath), value, bIgnoreMissing) != 0 ? value : _variant_t::Null();
    });
}

CString CNQXmlParser::GetNodeText(CString xpath, int bIgnoreMissing) {
    return Guarded(CString(), [&] { return GetNodeVal(xpath, bIgnoreMissing).Text(); });
}

CString CNQXmlParser::GetNodeAttribute(CString xpath, CString attribute) {
    return Guarded(CString(), [&] {
        const IXMLDOMNodePtr node = nqp2::xml::NodeAt(m_pDoc, _bstr_t(xpath));
        return node != nullptr ? nqp2::xml::AttributeOf(*node, attribute) : CString();
    });
}

CNQXmlParserNode CNQXmlParser::GetNode(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNode(nqp2::xml::NodeAt(m_pDoc, xpath));
        return handle;
    });
}

CNQXmlParserNode CNQXmlParser::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNodeList(nqp2::xml::NodesAt(m_pDoc, xpath));
        return handle;
    });
}

CNQXmlParserNode CNQXmlParser::FindParamNode(_bstr_t xpath, CString name) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNode(nqp2::xml::ParamNodeAt(m_pDoc, xpath, name));
        return handle;
    });
}
