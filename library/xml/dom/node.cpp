// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/node.h"

#include "xml/dom/libxml.h"

#include <libxml/chvalid.h>

#include <algorithm>

namespace nqp2::dom {
namespace {

bool HoldsCharacters(const Node& node) {
    return node.type == NodeType::Text || node.type == NodeType::CData;
}

bool HoldsZero(std::string_view text) {
    return text.find('\0') != std::string_view::npos;
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

bool IsQualifiedName(const std::string& text) {
    return !HoldsZero(text) && xmlValidateQName(Xml(text), 0) == 0;
}

bool IsXmlText(std::string_view text) {
    while (!text.empty()) {
        constexpr std::size_t kLongest = 4;
        int length = static_cast<int>(std::min(text.size(), kLongest));
        const int code =
            xmlGetUTF8Char(reinterpret_cast<const unsigned char*>(text.data()), &length);
        if (code < 0 || xmlIsCharQ(static_cast<unsigned>(code)) == 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
}

bool IsComment(std::string_view text) {
    return IsXmlText(text) && text.find("--") == std::string_view::npos && !text.ends_with('-');
}

bool IsInstruction(std::string_view target, std::string_view data) {
    const std::string name(target);
    // "xml" in any letter case is the declaration's or reserved.
    return !HoldsZero(target) && xmlValidateNCName(Xml(name), 0) == 0 &&
           xmlStrcasecmp(Xml(name), BAD_CAST "xml") != 0 && IsXmlText(data) &&
           data.find("?>") == std::string_view::npos;
}

bool MayHold(const Node& node, const std::string& text) {
    switch (node.type) {
    case NodeType::Comment:
        return IsComment(text);
    case NodeType::ProcessingInstruction:
        return IsInstruction(node.Name(), text);
    default:
        return IsXmlText(text);
    }
}

} // namespace nqp2::dom
