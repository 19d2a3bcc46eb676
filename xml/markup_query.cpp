// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/ComError.h"
#include "platform/diagnostics.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/select.h"
#include "xml/query_text.h"

using nqp2::dom::Node;
using nqp2::platform::OutputDebugStringW;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;
using nqp2::xml::PathOf;
using nqp2::xml::TextOf;

int CMarkupMSXML::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    if (m_pDoc == nullptr) {
        return 0;
    }
    val = _variant_t();
    try {
        const IXMLDOMNodePtr node = m_pDoc->SelectSingle(PathOf(xpath));
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
        const IXMLDOMNodePtr node = m_pDoc->SelectSingle(PathOf(_bstr_t(xpath)));
        if (node == nullptr) {
            OutputDebugStringW(L"selectSingleNode Failed");
            return {};
        }
        const std::string wanted = Utf8FromText(attribute.View());
        for (const Node* each = node->firstAttribute; each != nullptr; each = each->next) {
            if (BaseName(*each) == wanted) {
                return TextFromUtf8(each->content);
            }
        }
    } catch (const _com_error&) {
        OutputDebugStringW(L"selectSingleNode Throw Exception");
    }
    return {};
}

CMSXmlParserNode CMarkupMSXML::GetNode(_bstr_t xpath) {
    CMSXmlParserNode handle;
    if (m_pDoc != nullptr) {
        handle.SetNode(m_pDoc->SelectSingle(PathOf(xpath)));
    }
    return handle;
}

CMSXmlParserNode CMarkupMSXML::GetNodeList(_bstr_t xpath) {
    CMSXmlParserNode handle;
    if (m_pDoc == nullptr) {
        return handle;
    }
    IXMLDOMNodeListPtr list = m_pDoc->SelectNodes(PathOf(xpath));
    if (list->Length() > 0) {
        handle.SetNodeList(list);
    }
    return handle;
}

CMSXmlParserNode CMarkupMSXML::FindParamNode(_bstr_t xpath, CString name) {
    CMSXmlParserNode handle;
    if (m_pDoc == nullptr) {
        return handle;
    }
    const IXMLDOMNodeListPtr list = m_pDoc->SelectNodes(PathOf(xpath));
    for (std::size_t i = 0; i < list->Length(); ++i) {
        const IXMLDOMNodePtr item = list->Item(i);
        const Node* const nameNode = SelectFirst(*item, "NAME");
        if (nameNode != nullptr && TextOf(*nameNode) == name) {
            handle.SetNode(item);
            break;
        }
    }
    return handle;
}
