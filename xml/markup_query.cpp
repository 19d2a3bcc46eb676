// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/ComError.h"
#include "platform/diagnostics.h"
#include "xml/document_queries.h"
#include "xml/dom/node.h"
#include "xml/query_text.h"

using nqp2::platform::OutputDebugStringW;
using nqp2::xml::AttributeOf;
using nqp2::xml::NodeAt;
using nqp2::xml::NodesAt;
using nqp2::xml::ParamNodeAt;
using nqp2::xml::TextOf;

int CMarkupMSXML::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    if (m_pDoc == nullptr) {
        return 0;
    }
    val = _variant_t();
    try {
        const IXMLDOMNodePtr node = NodeAt(m_pDoc, xpath);
        if (node == nullptr && bIgnoreMissing != 0) {
            return 1;
        }
        if (node == nullptr) {
            OutputDebugStringW(L"selectSingleNode Failed");
            // Reading through a null node is what gives the second message: kept.
            throw _com_error(E_POINTER);
        }
        val = TextOf(*node);
        return 1;
    } catch (const _com_error&) {
        OutputDebugStringW(L"selectSingleNode Throw excetption");
        return 0;
    }
}

CString CMarkupMSXML::GetNodeText(CString xpath, int bIgnoreMissing) {
    _variant_t value;
    const int result = GetNodeVal(_bstr_t(xpath), value, bIgnoreMissing);
    return result == 1 ? value.Text() : CString();
}

CString CMarkupMSXML::GetNodeAttribute(CString xpath, CString attribute) {
    if (m_pDoc == nullptr) {
        return {};
    }
    try {
        const IXMLDOMNodePtr node = NodeAt(m_pDoc, _bstr_t(xpath));
        if (node != nullptr) {
            return AttributeOf(*node, attribute);
        }
        OutputDebugStringW(L"selectSingleNode Failed");
    } catch (const _com_error&) {
        OutputDebugStringW(L"selectSingleNode Throw Exception");
    }
    return {};
}

CMSXmlParserNode CMarkupMSXML::GetNode(_bstr_t xpath) {
    CMSXmlParserNode handle;
    handle.SetNode(NodeAt(m_pDoc, xpath));
    return handle;
}

CMSXmlParserNode CMarkupMSXML::GetNodeList(_bstr_t xpath) {
    CMSXmlParserNode handle;
    handle.SetNodeList(NodesAt(m_pDoc, xpath));
    return handle;
}

CMSXmlParserNode CMarkupMSXML::FindParamNode(_bstr_t xpath, CString name) {
    CMSXmlParserNode handle;
    handle.SetNode(ParamNodeAt(m_pDoc, xpath, name));
    return handle;
}
