// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/node.h"

namespace nqp2::dom {
namespace {

bool HoldsCharacters(const Node& node) {
    return node.type == NodeType::Text || node.type == NodeType::CData;
}

} // namespace

std::string_view BaseName(const Node& node) {
    if (node.type == NodeType::Attribute && node.Name() == kXmlns) {
        return {};
    }
    return node.PrefixLength() == 0 ? node.Name() : node.Name().substr(node.PrefixLength() + 1);
}

std::string_view Prefix(const Node& node) {
    if (node.type == NodeType::Attribute && node.Name() == kXmlns) {
        return kXmlns;
    }
    return node.Name().substr(0, node.PrefixLength());
}

std::string_view ShownName(const Node& node) {
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
        return node.Name();
    }
}

bool IsDeclaration(const Node& attribute) {
    return Prefix(attribute) == kXmlns;
}

std::string_view Text(const Node& node, std::string& scratch) {
    if (!node.TakesChildren()) {
        return node.Content();
    }
    const Node* const only = node.FirstChild();
    if (only == nullptr) {
        return {};
    }
    if (only->Next() == nullptr && HoldsCharacters(*only)) {
        return only->Content();
    }
    scratch.clear();
    for (const Node* each = NextInOrder(node, node); each != nullptr;
         each = NextInOrder(*each, node)) {
        if (HoldsCharacters(*each)) {
            scratch.append(each->Content());
        }
    }
    return scratch;
}

const Node* NextInOrder(const Node& node, const Node& top) {
    if (node.FirstChild() != nullptr) {
        return node.FirstChild();
    }
    for (const Node* each = &node; each != &top && each != nullptr; each = each->parent) {
        if (each->Next() != nullptr) {
            return each->Next();
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
    for (Node* each = element.FirstAttribute(); each != nullptr; each = each->Next()) {
        if (each->Name() == name) {
            return each;
        }
    }
    return nullptr;
}

} // namespace nqp2::dom
