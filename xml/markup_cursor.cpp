// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/MarkupMSXML.h"

#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/serialize.h"
#include "xml/query_text.h"

#include <string>

using nqp2::dom::Node;
using nqp2::dom::NodeType;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;
using nqp2::xml::TextOf;

namespace {

bool Fits(const Node& node, const std::string& name) {
    return node.type == NodeType::Element && (name.empty() || node.name == name);
}

CString TagName(const IXMLDOMNodePtr& position) {
    return position != nullptr ? TextFromUtf8(NodeName(*position)) : CString();
}

CString Data(const IXMLDOMNodePtr& position) {
    if (position == nullptr) {
        return {};
    }
    if (position->type == NodeType::ProcessingInstruction) {
        return TextFromUtf8(std::string(position->name) + " " + std::string(position->content));
    }
    return TextOf(*position);
}

CString Attribute(const IXMLDOMNodePtr& position, const wchar_t* name) {
    const Node* const found =
        position != nullptr ? FindAttribute(*position, Utf8FromText(name)) : nullptr;
    return found != nullptr ? TextFromUtf8(found->content) : CString();
}

CString XmlOf(const IXMLDOMNodePtr& position) {
    return position != nullptr ? TextFromUtf8(Serialize(*position)) : CString();
}

} // namespace

void CMarkupMSXML::ResetChildPos() {
    m_pChildPos = nullptr;
}

void CMarkupMSXML::ResetMainPos() {
    ResetChildPos();
    m_pMainPos = nullptr;
}

void CMarkupMSXML::ResetPos() {
    ResetMainPos();
    m_pParentPos = m_pDoc != nullptr ? m_pDoc->DocumentNode() : nullptr;
}

IXMLDOMNodePtr CMarkupMSXML::x_FindElem(const IXMLDOMNodePtr& parent, const IXMLDOMNodePtr& after,
                                        const wchar_t* name) const {
    const std::string wanted = Utf8FromText(name);
    Node* node = after != nullptr ? after->next : parent != nullptr ? parent->firstChild : nullptr;
    while (node != nullptr && !Fits(*node, wanted)) {
        node = node->next;
    }
    return node != nullptr ? node->tree->Share(node) : nullptr;
}

int CMarkupMSXML::FindElem(const wchar_t* name) {
    IXMLDOMNodePtr found = x_FindElem(m_pParentPos, m_pMainPos, name);
    return found != nullptr ? SetMainPosPtr(found) : 0;
}

int CMarkupMSXML::SetMainPosPtr(const IXMLDOMNodePtr& node) {
    if (node == nullptr || node->parent == nullptr || node->type == NodeType::Attribute) {
        return 0;
    }
    m_pMainPos = node;
    m_pParentPos = node->tree->Share(node->parent);
    ResetChildPos();
    return 1;
}

int CMarkupMSXML::FindChildElem(const wchar_t* name) {
    if (m_pMainPos == nullptr && FindElem() == 0) {
        return 0;
    }
    IXMLDOMNodePtr found = x_FindElem(m_pMainPos, m_pChildPos, name);
    if (found == nullptr) {
        return 0;
    }
    SetMainPosPtr(found->tree->Share(found->parent));
    m_pChildPos = found;
    return 1;
}

int CMarkupMSXML::IntoElem() {
    if (m_pMainPos == nullptr) {
        return 0;
    }
    m_pParentPos = m_pMainPos;
    m_pMainPos = m_pChildPos;
    ResetChildPos();
    return 1;
}

int CMarkupMSXML::OutOfElem() {
    if (m_pParentPos == nullptr || m_pParentPos->parent == nullptr) {
        return 0;
    }
    m_pChildPos = m_pMainPos;
    m_pMainPos = m_pParentPos;
    m_pParentPos = m_pMainPos->tree->Share(m_pMainPos->parent);
    return 1;
}

CString CMarkupMSXML::GetTagName() {
    return TagName(m_pMainPos);
}

CString CMarkupMSXML::GetChildTagName() {
    return TagName(m_pChildPos);
}

CString CMarkupMSXML::GetData() {
    return Data(m_pMainPos);
}

CString CMarkupMSXML::GetChildData() {
    return Data(m_pChildPos);
}

CString CMarkupMSXML::GetAttrib(const wchar_t* name) {
    return Attribute(m_pMainPos, name);
}

CString CMarkupMSXML::GetChildAttrib(const wchar_t* name) {
    return Attribute(m_pChildPos, name);
}

CString CMarkupMSXML::GetAttribName(int index) {
    const Node* each = m_pMainPos != nullptr ? m_pMainPos->firstAttribute : nullptr;
    for (int i = 0; i < index && each != nullptr; ++i) {
        each = each->next;
    }
    return index >= 0 && each != nullptr ? TextFromUtf8(each->name) : CString();
}

int CMarkupMSXML::GetElemCount(const wchar_t* name) {
    const std::string wanted = Utf8FromText(name);
    int count = 0;
    const Node* each = m_pParentPos != nullptr ? m_pParentPos->firstChild : nullptr;
    for (; each != nullptr; each = each->next) {
        count += Fits(*each, wanted) ? 1 : 0;
    }
    return count;
}

CString CMarkupMSXML::GetSubDoc() {
    return XmlOf(m_pMainPos);
}

CString CMarkupMSXML::GetChildSubDoc() {
    return XmlOf(m_pChildPos);
}

CString CMarkupMSXML::GetDoc() {
    return m_pDoc != nullptr ? XmlOf(m_pDoc->DocumentNode()) : CString();
}
