// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/tree.h"

#include "xml/dom/xpath.h"

#include <new>
#include <type_traits>
#include <utility>

namespace nqp2::dom {
namespace {

static_assert(std::is_trivially_destructible_v<Node>, "nodes are dropped with their arena");

std::uint32_t PrefixLength(std::string_view qualifiedName) {
    const std::size_t colon = qualifiedName.find(':');
    return colon == std::string_view::npos ? 0 : static_cast<std::uint32_t>(colon);
}

bool MayStandInDocument(const Tree& tree, const Node& child) {
    switch (child.type) {
    case NodeType::Element:
        return tree.Root() == nullptr;
    case NodeType::Text:
    case NodeType::CData:
        return false;
    default:
        return true;
    }
}

} // namespace

Tree::Tree() {
    Clear();
}

Tree::~Tree() = default;

Node* Tree::Root() const {
    for (Node* each = m_document->firstChild; each != nullptr; each = each->next) {
        if (each->type == NodeType::Element) {
            return each;
        }
    }
    return nullptr;
}

void Tree::Clear() {
    m_view.reset();
    m_arena.Clear();
    m_lastUri = {};
    m_document = &Create(NodeType::Document);
    ++m_version;
}

Node& Tree::Create(NodeType type) {
    Node* const node = new (m_arena.Allocate(sizeof(Node))) Node;
    node->tree = this;
    node->type = type;
    return *node;
}

std::string_view Tree::KeepUri(std::string_view uri) {
    if (!uri.empty() && uri != m_lastUri) {
        m_lastUri = m_arena.Copy(uri);
    }
    return uri.empty() ? std::string_view() : m_lastUri;
}

Node& Tree::CreateElement(std::string_view qualifiedName, std::string_view uri) {
    Node& node = Create(NodeType::Element);
    node.name = m_arena.Copy(qualifiedName);
    node.prefixLength = PrefixLength(qualifiedName);
    node.uri = KeepUri(uri);
    return node;
}

Node& Tree::CreateNamedLike(const Node& element) {
    Node& node = Create(NodeType::Element);
    node.name = element.name;
    node.prefixLength = element.prefixLength;
    node.uri = element.uri;
    return node;
}

Node& Tree::CreateCharacters(NodeType type, std::string_view content) {
    Node& node = Create(type);
    node.content = m_arena.Copy(content);
    return node;
}

Node& Tree::CreateInstruction(std::string_view target, std::string_view data) {
    Node& node = Create(NodeType::ProcessingInstruction);
    node.name = m_arena.Copy(target);
    node.content = m_arena.Copy(data);
    return node;
}

bool Tree::Insert(Node& parent, Node& child, Node* before) {
    if (!TakesChildren(parent) || (before != nullptr && before->parent != &parent) ||
        (&parent == m_document && !MayStandInDocument(*this, child))) {
        return false;
    }
    if (before == nullptr) {
        Append(parent, child);
        return true;
    }
    child.parent = &parent;
    child.previous = before->previous;
    child.next = before;
    (before->previous != nullptr ? before->previous->next : parent.firstChild) = &child;
    before->previous = &child;
    ++m_version;
    return true;
}

void Tree::Append(Node& parent, Node& child) {
    Node* const last = parent.lastChild;
    child.parent = &parent;
    child.previous = last;
    child.next = nullptr;
    (last != nullptr ? last->next : parent.firstChild) = &child;
    parent.lastChild = &child;
    ++m_version;
}

void Tree::Unlink(Node& node) {
    if (node.parent == nullptr) {
        return;
    }
    (node.previous != nullptr ? node.previous->next : node.parent->firstChild) = node.next;
    (node.next != nullptr ? node.next->previous : node.parent->lastChild) = node.previous;
    node.parent = nullptr;
    node.previous = nullptr;
    node.next = nullptr;
    ++m_version;
}

Node& Tree::AppendAttribute(Node& element, Node* last, std::string_view name,
                            std::string_view value, std::string_view uri) {
    Node& attribute = Create(NodeType::Attribute);
    attribute.name = m_arena.Copy(name);
    attribute.prefixLength = PrefixLength(name);
    attribute.content = m_arena.Copy(value);
    attribute.uri = KeepUri(uri);
    attribute.parent = &element;
    attribute.previous = last;
    (last != nullptr ? last->next : element.firstAttribute) = &attribute;
    ++m_version;
    return attribute;
}

void Tree::SetAttribute(Node& element, std::string_view name, std::string_view value,
                        std::string_view uri) {
    Node* last = nullptr;
    for (Node* each = element.firstAttribute; each != nullptr; last = each, each = each->next) {
        if (each->name == name) {
            each->content = m_arena.Copy(value);
            ++m_version;
            return;
        }
    }
    AppendAttribute(element, last, name, value, uri);
}

bool Tree::SetText(Node& node, std::string_view text, NodeType type) {
    if (node.type == NodeType::Document) {
        return false;
    }
    if (node.type != NodeType::Element && node.type != NodeType::Fragment) {
        node.content = m_arena.Copy(text);
        ++m_version;
        return true;
    }
    while (node.firstChild != nullptr) {
        Unlink(*node.firstChild);
    }
    return Insert(node, CreateCharacters(type, text), nullptr);
}

Node& Tree::CopyAlone(const Node& source) {
    Node& copy = Create(source.type);
    copy.name = m_arena.Copy(source.name);
    copy.content = m_arena.Copy(source.content);
    copy.uri = KeepUri(source.uri);
    copy.prefixLength = source.prefixLength;
    Node* last = nullptr;
    for (const Node* each = source.firstAttribute; each != nullptr; each = each->next) {
        last = &AppendAttribute(copy, last, each->name, each->content, each->uri);
    }
    return copy;
}

Node& Tree::Copy(const Node& source) {
    Node& top = CopyAlone(source);
    Node* copy = &top;
    const Node* from = &source;
    for (const Node* next = NextInOrder(*from, source); next != nullptr;
         next = NextInOrder(*from, source)) {
        // Up to the copy of the parent that the next node has.
        for (const Node* up = from; up != next->parent; up = up->parent) {
            copy = copy->parent;
        }
        Node& child = CopyAlone(*next);
        Insert(*copy, child, nullptr);
        copy = &child;
        from = next;
    }
    return top;
}

void Tree::SetRule(SelectionRule rule) {
    m_rule = std::move(rule);
    ++m_version;
}

std::shared_ptr<Node> Tree::Share(Node* node) {
    return node != nullptr ? std::shared_ptr<Node>(shared_from_this(), node) : nullptr;
}

} // namespace nqp2::dom
