// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MSXmlParserNode.h"
#include "NQP2ParserU/NQXmlParserNode.h"
#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"
#include "xml/dom/select.h"
#include "xml/dom/serialize.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

using nqp2::NodeHandle;
using nqp2::dom::Node;
using nqp2::platform::ComGuarded;
using nqp2::platform::Guarded;
using nqp2::platform::TextFromUtf8;
using nqp2::platform::Utf8FromText;
using nqp2::xml::PathOf;
using nqp2::xml::TextOf;

namespace {

/// Refuses what would make a document that cannot be loaded again.
bool Replace(Node& node, const CString& text) {
    const std::string bytes = Utf8FromText(text.View());
    node.tree->Tidy();
    return nqp2::dom::MayHold(node, bytes) && node.tree->SetText(node, bytes);
}

/// Both families' handles on what a path selects.
template <class Handle>
Handle HandleOf(IXMLDOMNodePtr node) {
    Handle handle;
    handle.SetNode(std::move(node));
    return handle;
}

template <class Handle>
Handle HandleOf(IXMLDOMNodeListPtr list) {
    Handle handle;
    handle.SetNodeList(std::move(list));
    return handle;
}

} // namespace

void NodeHandle::SetNode(IXMLDOMNodePtr node) noexcept {
    m_pNode = std::move(node);
}

void NodeHandle::SetNodeList(IXMLDOMNodeListPtr list) noexcept {
    m_pNodeList = std::move(list);
}

int NodeHandle::IsEmpty() const noexcept {
    return m_pNode == nullptr && m_pNodeList == nullptr ? 1 : 0;
}

int NodeHandle::GetNextNode() {
    return Guarded(0, [&] {
        if (m_pNodeList == nullptr) {
            return 0;
        }
        m_pNode = m_pNodeList->Next();
        return m_pNode != nullptr ? 1 : 0;
    });
}

int NodeHandle::GetNextNode(CString& name, CString& value) {
    return Guarded(0, [&] {
        if (GetNextNode() == 0) {
            return 0;
        }
        const Node* const nameNode = SelectFirst(*m_pNode, "NAME");
        const Node* const valueNode = SelectFirst(*m_pNode, "VALUE");
        CString foundName = nameNode != nullptr ? TextOf(*nameNode) : CString();
        value = valueNode != nullptr ? TextOf(*valueNode) : CString();
        name = std::move(foundName);
        return 1;
    });
}

int NodeHandle::GetNodeVal(_bstr_t xpath, _variant_t& val, int bIgnoreMissing) {
    return Guarded(0, [&] {
        val = _variant_t();
        if (CurrentNode() == nullptr) {
            return 0;
        }
        const Node* const target =
            xpath.Text().IsEmpty() ? m_pNode.get() : SelectFirst(*m_pNode, PathOf(xpath));
        if (target == nullptr) {
            return bIgnoreMissing != 0 ? 1 : 0;
        }
        val = TextOf(*target);
        return 1;
    });
}

_variant_t NodeHandle::GetNodeVal(CString xpath, int bIgnoreMissing) {
    return Guarded(_variant_t::Null(), [&] {
        _variant_t value;
        return GetNodeVal(_bstr_t(xpath), value, bIgnoreMissing) != 0 ? value : _variant_t::Null();
    });
}

_variant_t NodeHandle::GetNodeVal(int bIgnoreMissing) noexcept {
    return GetNodeVal(CString(), bIgnoreMissing);
}

CString NodeHandle::GetNodeText(CString xpath, int bIgnoreMissing) noexcept {
    return GetNodeVal(std::move(xpath), bIgnoreMissing).Text();
}

CString NodeHandle::GetNodeText(int bIgnoreMissing) noexcept {
    return GetNodeText(CString(), bIgnoreMissing);
}

_bstr_t NodeHandle::GetXml() {
    return Guarded(_bstr_t(L""), [&] {
        const IXMLDOMNodePtr& node = CurrentNode();
        return node != nullptr ? _bstr_t(TextFromUtf8(Serialize(*node))) : _bstr_t(L"");
    });
}

int NodeHandle::SetNodeText(const CString& text) {
    return Guarded(0, [&] { return m_pNode != nullptr && Replace(*m_pNode, text) ? 1 : 0; });
}

int NodeHandle::SetParamVal(_variant_t val) {
    return Guarded(0, [&] {
        if (m_pNode == nullptr || val.vt == VT_EMPTY || val.vt == VT_NULL ||
            ShownName(*m_pNode) != "PARAM") {
            return 0;
        }
        Node* const value = nqp2::dom::SelectFirst(*m_pNode, "VALUE");
        return value != nullptr && Replace(*value, val.ToText()) ? 1 : 0;
    });
}

const IXMLDOMNodePtr& NodeHandle::CurrentNode() noexcept {
    if (m_pNode == nullptr) {
        GetNextNode();
    }
    return m_pNode;
}

IXMLDOMNodePtr NodeHandle::SelectNode(const _bstr_t& xpath) {
    return ComGuarded(IXMLDOMNodePtr(), [&] {
        const IXMLDOMNodePtr& node = CurrentNode();
        return node != nullptr ? node->tree->Share(SelectFirst(*node, PathOf(xpath))) : nullptr;
    });
}

IXMLDOMNodeListPtr NodeHandle::SelectNodeList(const _bstr_t& xpath) {
    return ComGuarded(IXMLDOMNodeListPtr(), [&] {
        const IXMLDOMNodePtr& node = CurrentNode();
        IXMLDOMNodeListPtr list = node != nullptr ? ListOf(*node, PathOf(xpath)) : nullptr;
        return list != nullptr && list->Length() > 0 ? list : nullptr;
    });
}

CMSXmlParserNode CMSXmlParserNode::GetNode(_bstr_t xpath) {
    return ComGuarded(CMSXmlParserNode(),
                      [&] { return HandleOf<CMSXmlParserNode>(SelectNode(xpath)); });
}

CMSXmlParserNode CMSXmlParserNode::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CMSXmlParserNode(),
                      [&] { return HandleOf<CMSXmlParserNode>(SelectNodeList(xpath)); });
}

CNQXmlParserNode CNQXmlParserNode::GetNode(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(),
                      [&] { return HandleOf<CNQXmlParserNode>(SelectNode(xpath)); });
}

CNQXmlParserNode CNQXmlParserNode::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(),
                      [&] { return HandleOf<CNQXmlParserNode>(SelectNodeList(xpath)); });
}

CNQXmlParserNode CNQXmlParserNode::GetChildNodeList() {
    return Guarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        const IXMLDOMNodePtr& node = CurrentNode();
        if (node == nullptr || node->FirstChild() == nullptr) {
            return handle;
        }
        std::vector<Node*> children;
        for (Node* each = node->FirstChild(); each != nullptr; each = each->Next()) {
            children.push_back(each);
        }
        handle.SetNodeList(std::make_shared<nqp2::dom::NodeList>(node->tree->shared_from_this(),
                                                                 std::move(children)));
        return handle;
    });
}

int CNQXmlParserNode::GetNodeInfo(CString& name, _variant_t& value) {
    return Guarded(0, [&] {
        const IXMLDOMNodePtr& node = CurrentNode();
        if (node == nullptr) {
            return 0;
        }
        name.Empty(); // the outcome of a failure
        value = _variant_t();
        value.vt = VT_NULL;
        CString found = TextFromUtf8(ShownName(*node));
        value = TextOf(*node);
        name = std::move(found);
        return 1;
    });
}
