// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "NQP2ParserU/ComError.h"
#include "platform/diagnostics.h"
#include "platform/guard.h"
#include "xml/document_queries.h"
#include "xml/dom/node.h"

using nqp2::platform::ComGuarded;
using nqp2::platform::Guarded;
using nqp2::platform::OutputDebugStringW;
using nqp2::xml::AttributeOf;
using nqp2::xml::NodeAt;
using nqp2::xml::NodesAt;
using nqp2::xml::ParamNodeAt;
using nqp2::xml::TextOf;

int CMarkupMSXML::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    return Guarded(0, [&] {
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
    });
}

CString CMarkupMSXML::GetNodeText(CString xpath, int bIgnoreMissing) {
    return Guarded(CString(), [&] {
        _variant_t value;
        const int result = GetNodeVal(_bstr_t(xpath), value, bIgnoreMissing);
        return result == 1 ? value.Text() : CString();
    });
}

CString CMarkupMSXML::GetNodeAttribute(CString xpath, CString attribute) {
    return Guarded(CString(), [&] {
        if (m_pDoc == nullptr) {
            return CString();
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
        return CString();
    });
}

CMSXmlParserNode CMarkupMSXML::GetNode(_bstr_t xpath) {
    return ComGuarded(CMSXmlParserNode(), [&] {
        CMSXmlParserNode handle;
        handle.SetNode(NodeAt(m_pDoc, xpath));
        return handle;
    });
}

CMSXmlParserNode CMarkupMSXML::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CMSXmlParserNode(), [&] {
        CMSXmlParserNode handle;
        handle.SetNodeList(NodesAt(m_pDoc, xpath));
        return handle;
    });
}

CMSXmlParserNode CMarkupMSXML::FindParamNode(_bstr_t xpath, CString name) {
    return ComGuarded(CMSXmlParserNode(), [&] {
        CMSXmlParserNode handle;
        handle.SetNode(ParamNodeAt(m_pDoc, xpath, name));
        return handle;
    });
}
