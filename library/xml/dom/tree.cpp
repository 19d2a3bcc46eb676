// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/tree.h"

#include <algorithm>
#include <new>
#include <type_traits>
#include <utility>

namespace nqp2::dom {
namespace {

static_assert(std::is_trivially_destructible_v<Node>, "nodes are dropped with their pool");
static_assert(std::is_trivially_destructible_v<NodeName>, "names are dropped with their arena");

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

std::size_t PlaceOf(std::string_view name, std::size_t places) {
    constexpr std::size_t kFactor = 31;
    std::size_t mixed = name.size();
    for (const char ch : name.substr(0, 2)) {
        mixed = mixed * kFactor + static_cast<unsigned char>(ch);
    }
    for (const char ch : name.substr(name.size() - std::min<std::size_t>(name.size(), 4))) {
        mixed = mixed * kFactor + static_cast<unsigned char>(ch);
    }
    return mixed % places;
}

/// Of texts that mostly are the very same bytes.
bool IsSame(std::string_view left, std::string_view right) {
    return left.size() == right.size() && (left.data() == right.data() || left == right);
}

} // namespace

Tree::Tree() : m_rule(std::make_shared<const SelectionRule>()) {
    m_document.tree = this;
    m_document.type = NodeType::Document;
    Clear();
}

Tree::~Tree() = default;

Node* Tree::Root() const {
    for (Node* each = m_document.FirstChild(); each != nullptr; each = each->Next()) {
        if (each->type == NodeType::Element) {
            return each;
        }
    }
    return nullptr;
}

void Tree::Clear() noexcept {
    m_queries.LetGo();
    m_attributes.Clear();
    m_nodes.Clear();
    m_texts.Clear();
    m_known.fill(nullptr);
    m_lastUri = {};
    m_document.m_firstChild = nullptr;
    m_tidyAt = kTidyStep;
    ++m_version;
}

void Tree::TakeOutAll() noexcept {
    while (m_document.m_firstChild != nullptr) {
        Unlink(*m_document.m_firstChild);
    }
}

Node& Tree::Create(NodeType type, const NodeName& name) {
    Node& node = m_nodes.Take();
    node.tree = this;
    node.type = type;
    node.m_name = &name;
    return node;
}

const NodeName& Tree::NewName(std::string_view text, std::string_view uri, From from) {
    const auto kept = [&](std::string_view each) {
        return from == From::Document ? each : m_texts.Copy(each);
    };
    if (!uri.empty() && !IsSame(uri, m_lastUri)) {
        m_lastUri = kept(uri);
    }
    void* const place = m_texts.Allocate(sizeof(NodeName));
    return *new (place)
        NodeName{kept(text), uri.empty() ? uri : m_lastUri, PrefixLength(text), nullptr};
}

const NodeName& Tree::KeepName(std::string_view text, std::string_view uri, From from) {
    const NodeName*& known = m_known[PlaceOf(text, kKnownNames)];
    if (known == nullptr || known->text != text || !IsSame(known->uri, uri)) {
        known = &NewName(text, uri, from);
    }
    return *known;
}

void Tree::Hold(Node& node, std::string_view content) {
    HoldKept(node, m_texts.Copy(content));
}

void Tree::HoldKept(Node& node, std::string_view kept) noexcept {
    node.m_characters = kept.data();
    node.m_length = kept.size();
}

Node& Tree::CreateElement(std::string_view qualifiedName, std::string_view uri) {
    return Create(NodeType::Element, KeepName(qualifiedName, uri));
}

Node& Tree::CreateNewlyNamed(std::string_view qualifiedName, std::string_view uri) {
    return Create(NodeType::Element, NewName(qualifiedName, uri, From::Elsewhere));
}

Node& Tree::CreateNamedLike(const Node& element) {
    return Create(NodeType::Element, *element.m_name);
}

Node& Tree::CreateCharacters(NodeType type, std::string_view content) {
    Node& node = Create(type);
    Hold(node, content);
    return node;
}

Node& Tree::CreateInstruction(std::string_view target, std::string_view data) {
    Node& node = Create(NodeType::ProcessingInstruction, KeepName(target, {}));
    Hold(node, data);
    return node;
}

char* Tree::KeepDocument(std::string_view bytes) {
    auto* const kept = static_cast<char*>(m_texts.Allocate(bytes.size() + 1));
    kept[bytes.copy(kept, bytes.size())] = '\0';
    constexpr std::size_t kBytesOfNode = 8; // at least, where tags have names and texts are some
    m_nodes.Reserve(bytes.size() / kBytesOfNode);
    return kept;
}

Node& Tree::CreateKeptElement(std::string_view keptName, std::string_view keptUri) {
    return Create(NodeType::Element, KeepName(keptName, keptUri, From::Document));
}

Node& Tree::CreateKeptCharacters(NodeType type, std::string_view kept) {
    Node& node = Create(type);
    HoldKept(node, kept);
    return node;
}

/// Before `before`, or as the last.
void Tree::Link(Node*& first, Node& node, Node* before) noexcept {
    node.m_next = before;
    if (first == nullptr) {
        node.m_previous = &node;
        first = &node;
        return;
    }
    Node& behind = before != nullptr ? *before : *first; // knows the one that comes before
    node.m_previous = behind.m_previous;
    behind.m_previous = &node;
    (before == first ? first : node.m_previous->m_next) = &node;
}

void Tree::TakeOut(Node*& first, Node& node) noexcept {
    Node& behind = node.m_next != nullptr ? *node.m_next : *first;
    if (first == &node) {
        first = node.m_next;
    } else {
        node.m_previous->m_next = node.m_next;
    }
    behind.m_previous = node.m_previous;
    node.m_previous = nullptr;
    node.m_next = nullptr;
}

bool Tree::Insert(Node& parent, Node& child, Node* before) {
    if (!parent.TakesChildren() || (before != nullptr && before->parent != &parent) ||
        (&parent == &m_document && !MayStandInDocument(*this, child))) {
        return false;
    }
    child.parent = &parent;
    Link(parent.m_firstChild, child, before);
    NoteMove(child);
    return true;
}

void Tree::Append(Node& parent, Node& child) {
    child.parent = &parent;
    Link(parent.m_firstChild, child, nullptr);
    NoteMove(child);
}

void Tree::Unlink(Node& node) {
    if (node.parent == nullptr) {
        return;
    }
    TakeOut(node.parent->m_firstChild, node);
    node.parent = nullptr;
    NoteMove(node);
}

void Tree::AppendAttribute(Node& element, std::string_view name, std::string_view value,
                           std::string_view uri) {
    Attach(element, KeepName(name, uri), m_texts.Copy(value));
}

void Tree::AppendKeptAttribute(Node& element, std::string_view name, std::string_view value,
                               std::string_view uri) {
    Attach(element, KeepName(name, uri, From::Document), value);
}

void Tree::Attach(Node& element, const NodeName& name, std::string_view kept) {
    Node& attribute = Create(NodeType::Attribute, name);
    HoldKept(attribute, kept);
    attribute.parent = &element;
    Link(element.m_firstAttribute, attribute, nullptr);
    m_attributes.Added(attribute);
    ++m_version;
}

void Tree::SetAttribute(Node& element, std::string_view name, std::string_view value,
                        std::string_view uri) {
    Node* const present = m_attributes.Find(element, name);
    if (present == nullptr) {
        AppendAttribute(element, name, value, uri);
        return;
    }
    Hold(*present, value);
    ++m_version;
}

bool Tree::SetText(Node& node, std::string_view text, NodeType type) {
    if (node.type == NodeType::Document) {
        return false;
    }
    if (!node.TakesChildren()) {
        Hold(node, text);
        ++m_version;
        return true;
    }
    Node& characters = CreateCharacters(type, text);
    while (node.m_firstChild != nullptr) {
        Unlink(*node.m_firstChild);
    }
    Append(node, characters);
    return true;
}

Node& Tree::CopyAlone(const Node& source) {
    Node& copy = Create(source.type,
                        source.Name().empty() ? kNoName : KeepName(source.Name(), source.Uri()));
    if (!copy.TakesChildren()) {
        Hold(copy, source.Content());
    }
    for (const Node* each = source.FirstAttribute(); each != nullptr; each = each->Next()) {
        AppendAttribute(copy, each->Name(), each->Content(), each->Uri());
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
        Append(*copy, child);
        copy = &child;
        from = next;
    }
    return top;
}

void Tree::SetRule(std::shared_ptr<const SelectionRule> rule) noexcept {
    m_rule = std::move(rule);
    m_queries.DropAnchors();
    ++m_version;
}

std::shared_ptr<Node> Tree::Share(Node* node) {
    std::shared_ptr<Tree> self = node != nullptr ? shared_from_this() : nullptr;
    if (node == nullptr || node == &m_document) {
        return {std::move(self), node};
    }
    ++node->m_holders;
    return {node, [held = std::move(self)](Node* let) { --let->m_holders; }};
}

} // namespace nqp2::dom
