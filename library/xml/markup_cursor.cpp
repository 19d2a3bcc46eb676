// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"
#include "xml/dom/serialize.h"

#include <string>
#include <utility>

using nqp2::dom::Node;
using nqp2::dom::NodeType;
using nqp2::platform::Guarded;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;
using nqp2::xml::TextOf;

namespace {

bool Fits(const Node& node, const std::string& name) {
    return node.type == NodeType::Element && (name.empty() || node.Name() == name);
}

// What a position says of itself; "" for one that is not set.

CString TagName(const IXMLDOMNodePtr& position) noexcept {
    return Guarded(CString(), [&] {
        return position != nullptr ? TextFromUtf8(ShownName(*position)) : CString();
    });
}

CString Data(const IXMLDOMNodePtr& position) noexcept {
    return Guarded(CString(), [&] {
        if (position == nullptr) {
            return CString();
        }
        if (position->type == NodeType::ProcessingInstruction) {
            return TextFromUtf8(std::string(position->Name()) + " " +
                                std::string(position->Content()));
        }
        return TextOf(*position);
    });
}

CString Attribute(const IXMLDOMNodePtr& position, const wchar_t* name) noexcept {
    return Guarded(CString(), [&] {
        const Node* const found =
            position != nullptr ? FindAttribute(*position, Utf8FromText(name)) : nullptr;
        return found != nullptr ? TextFromUtf8(found->Content()) : CString();
    });
}

CString XmlOf(const IXMLDOMNodePtr& position) noexcept {
    return Guarded(CString(), [&] {
        return position != nullptr ? TextFromUtf8(Serialize(*position)) : CString();
    });
}

} // namespace

void CMarkupMSXML::ResetChildPos() noexcept {
    m_pChildPos = nullptr;
}

void CMarkupMSXML::ResetMainPos() noexcept {
    m_pMainPos = m_pChildPos = nullptr;
}

void CMarkupMSXML::ResetPos() {
    Guarded([&] {
        ResetMainPos();
        m_pParentPos = m_pDoc != nullptr ? m_pDoc->DocumentNode() : nullptr;
    });
}

IXMLDOMNodePtr CMarkupMSXML::x_FindElem(const IXMLDOMNodePtr& parent, const IXMLDOMNodePtr& after,
                                        const wchar_t* name) const {
    const std::string wanted = Utf8FromText(name);
    Node* node = after != nullptr    ? after->Next()
                 : parent != nullptr ? parent->FirstChild()
                                     : nullptr;
    while (node != nullptr && !Fits(*node, wanted)) {
        node = node->Next();
    }
    return node != nullptr ? node->tree->Share(node) : nullptr;
}

int CMarkupMSXML::FindElem(const wchar_t* name) {
    return Guarded(0, [&] {
        const IXMLDOMNodePtr found = x_FindElem(m_pParentPos, m_pMainPos, name);
        return found != nullptr ? SetMainPosPtr(found) : 0;
    });
}

int CMarkupMSXML::SetMainPosPtr(const IXMLDOMNodePtr& node) {
    return Guarded(0, [&] {
        if (node == nullptr || node->parent == nullptr || node->type == NodeType::Attribute) {
            return 0;
        }
        IXMLDOMNodePtr parent = node->tree->Share(node->parent);
        m_pMainPos = node;
        m_pParentPos = std::move(parent);
        ResetChildPos();
        return 1;
    });
}

int CMarkupMSXML::FindChildElem(const wchar_t* name) {
    return Guarded(0, [&] {
        if (m_pMainPos == nullptr && FindElem() == 0) {
            return 0;
        }
        IXMLDOMNodePtr found = x_FindElem(m_pMainPos, m_pChildPos, name);
        if (found == nullptr || SetMainPosPtr(found->tree->Share(found->parent)) == 0) {
            return 0;
        }
        m_pChildPos = std::move(found);
        return 1;
    });
}

int CMarkupMSXML::IntoElem() {
    return Guarded(0, [&] {
        if (m_pMainPos == nullptr) {
            return 0;
        }
        m_pParentPos = m_pMainPos;
        m_pMainPos = m_pChildPos;
        ResetChildPos();
        return 1;
    });
}

int CMarkupMSXML::OutOfElem() {
    return Guarded(0, [&] {
        if (m_pParentPos == nullptr || m_pParentPos->parent == nullptr) {
            return 0;
        }
        IXMLDOMNodePtr above = m_pParentPos->tree->Share(m_pParentPos->parent);
        m_pChildPos = std::move(m_pMainPos);
        m_pMainPos = std::move(m_pParentPos);
        m_pParentPos = std::move(above);
        return 1;
    });
}

CString CMarkupMSXML::GetTagName() noexcept {
    return TagName(m_pMainPos);
}

CString CMarkupMSXML::GetChildTagName() noexcept {
    return TagName(m_pChildPos);
}

CString CMarkupMSXML::GetData() noexcept {
    return Data(m_pMainPos);
}

CString CMarkupMSXML::GetChildData() noexcept {
    return Data(m_pChildPos);
}

CString CMarkupMSXML::GetAttrib(const wchar_t* name) noexcept {
    return Attribute(m_pMainPos, name);
}

CString CMarkupMSXML::GetChildAttrib(const wchar_t* name) noexcept {
    return Attribute(m_pChildPos, name);
}

CString CMarkupMSXML::GetAttribName(int index) {
    return Guarded(CString(), [&] {
        const Node* each = m_pMainPos != nullptr ? m_pMainPos->FirstAttribute() : nullptr;
        for (int i = 0; i < index && each != nullptr; ++i) {
            each = each->Next();
        }
        return index >= 0 && each != nullptr ? TextFromUtf8(each->Name()) : CString();
    });
}

int CMarkupMSXML::GetElemCount(const wchar_t* name) {
    return Guarded(0, [&] {
        const std::string wanted = Utf8FromText(name);
        int count = 0;
        const Node* each = m_pParentPos != nullptr ? m_pParentPos->FirstChild() : nullptr;
        for (; each != nullptr; each = each->Next()) {
            count += Fits(*each, wanted) ? 1 : 0;
        }
        return count;
    });
}

CString CMarkupMSXML::GetSubDoc() noexcept {
    return XmlOf(m_pMainPos);
}

CString CMarkupMSXML::GetChildSubDoc() noexcept {
    return XmlOf(m_pChildPos);
}

CString CMarkupMSXML::GetDoc() {
    return Guarded(CString(),
                   [&] { return m_pDoc != nullptr ? XmlOf(m_pDoc->DocumentNode()) : CString(); });
}
