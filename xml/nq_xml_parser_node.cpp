// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/NQXmlParserNode.h"

#include "platform/unicode.h"
#include "xml/dom/node_list.h"
#include "xml/query_text.h"

#include <memory>
#include <vector>

CNQXmlParserNode CNQXmlParserNode::GetNode(_bstr_t xpath) {
    CNQXmlParserNode handle;
    handle.SetNode(SelectNode(xpath));
    return handle;
}

CNQXmlParserNode CNQXmlParserNode::GetNodeList(_bstr_t xpath) {
    CNQXmlParserNode handle;
    handle.SetNodeList(SelectNodeList(xpath));
    return handle;
}

CNQXmlParserNode CNQXmlParserNode::GetChildNodeList() {
    CNQXmlParserNode handle;
    const IXMLDOMNodePtr& node = CurrentNode();
    if (node == nullptr || node->firstChild == nullptr) {
        return handle;
    }
    std::vector<nqp2::dom::Node*> children;
    for (nqp2::dom::Node* each = node->firstChild; each != nullptr; each = each->next) {
        children.push_back(each);
    }
    handle.SetNodeList(
        std::make_shared<nqp2::dom::NodeList>(node->tree->shared_from_this(), std::move(children)));
    return handle;
}

int CNQXmlParserNode::GetNodeInfo(CString& name, _variant_t& value) {
    const IXMLDOMNodePtr& node = CurrentNode();
    if (node == nullptr) {
        return 0;
    }
    name = nqp2::platform::TextFromUtf8(NodeName(*node));
    value = nqp2::xml::TextOf(*node);
    return 1;
}
