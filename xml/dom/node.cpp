// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/node.h"

namespace nqp2::dom {
namespace {

bool HoldsCharacters(const Node& node) {
    return node.type == NodeType::Text || node.type == NodeType::CData;
}

} // namespace

bool TakesChildren(const Node& node) {
    return node.type == NodeType::Element || node.type == NodeType::Document ||
           node.type == NodeType::Fragment;
}

std::string_view BaseName(const Node& node) {
    if (node.type == NodeType::Attribute && node.name == kXmlns) {
        return {};
    }
    return node.prefixLength == 0 ? node.name : node.name.substr(node.prefixLength + 1);
}

std::string_view Prefix(const Node& node) {
    if (node.type == NodeType::Attribute && node.name == kXmlns) {
        return kXmlns;
    }
    return node.name.substr(0, node.prefixLength);
}

std::string_view NodeName(const Node& node) {
    switch (node.type) {
    case NodeType::Document:
        return "#document";
    case NodeType::Text:
        return "#text";
    case NodeType::CData:
        return "#cdata-section";
    case NodeType::Comment:
        return "#comment";
    case NodeType::Fragment:
        return "#document-fragment";
    default:
        return node.name;
    }
}

bool IsDeclaration(const Node& attribute) {
    return Prefix(attribute) == kXmlns;
}

std::string_view Text(const Node& node, std::string& scratch) {
    if (!TakesChildren(node)) {
        return node.content;
    }
    const Node* const only = node.firstChild;
    if (only == nullptr) {
        return {};
    }
    if (only->next == nullptr && HoldsCharacters(*only)) {
        return only->content;
    }
    scratch.clear();
    for (const Node* each = NextInOrder(node, node); each != nullptr;
         each = NextInOrder(*each, node)) {
        if (HoldsCharacters(*each)) {
            scratch.append(each->content);
        }
    }
    return scratch;
}

const Node* NextInOrder(const Node& node, const Node& top) {
    if (node.firstChild != nullptr) {
        return node.firstChild;
    }
    for (const Node* each = &node; each != &top && each != nullptr; each = each->parent) {
        if (each->next != nullptr) {
            return each->next;
        }
    }
    return nullptr;
}

Node& Top(Node& node) {
    Node* top = &node;
    while (top->parent != nullptr) {
        top = top->parent;
    }
    return *top;
}

Node* FindAttribute(const Node& element, std::string_view name) {
    for (Node* each = element.firstAttribute; each != nullptr; each = each->next) {
        if (each->name == name) {
            return each;
        }
    }
    return nullptr;
}

} // namespace nqp2::dom
