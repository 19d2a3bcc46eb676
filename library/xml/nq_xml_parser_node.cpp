// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQXmlParserNode.h"

#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/document_queries.h"
#include "xml/dom/node_list.h"

#include <memory>
#include <utility>
#include <vector>

using nqp2::dom::Node;
using nqp2::platform::ComGuarded;
using nqp2::platform::Guarded;

CNQXmlParserNode CNQXmlParserNode::GetNode(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNode(SelectNode(xpath));
        return handle;
    });
}

CNQXmlParserNode CNQXmlParserNode::GetNodeList(_bstr_t xpath) {
    return ComGuarded(CNQXmlParserNode(), [&] {
        CNQXmlParserNode handle;
        handle.SetNodeList(SelectNodeList(xpath));
        return handle;
    });
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
        CString found = nqp2::platform::TextFromUtf8(ShownName(*node));
        value = nqp2::xml::TextOf(*node);
        name = std::move(found);
        return 1;
    });
}
