// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::dom {

class Tree;
class NodePool;

/// What names a namespace declaration: alone, or as the prefix of the prefix that is bound.
inline constexpr std::string_view kXmlns = "xmlns";

enum class NodeType : std::uint8_t {
    None = 0, ///< memory that is no node at present
    Element = 1,
    Attribute = 2,
    Text = 3,
    CData = 4,
    ProcessingInstruction = 7,
    Comment = 8,
    Document = 9,
    Fragment = 11,
};

/// What a node is called. Nodes of one name share one of these.
struct NodeName {
    std::string_view text; ///< qualified name; target of a processing instruction
    std::string_view uri;  ///< namespace of an element or attribute, "" for none
    std::uint32_t prefixLength = 0;
    /// While a tree is tidied up: this name where it is kept from then on.
    mutable const NodeName* moved = nullptr;
};
inline constexpr NodeName kNoName;

/// One node of a tree, which makes, links and changes it. A node that was taken out of it stays
/// valid as long as it or one above or below it is held; see Tree::Share. All text is UTF-8.
/// Namespace declarations are among an element's attributes under their own names ("xmlns",
/// "xmlns:p"). `parent` of an attribute is its element.
struct Node {
    Tree* tree = nullptr;
    Node* parent = nullptr;

    [[nodiscard]] std::string_view Name() const { return m_name->text; }
    [[nodiscard]] std::string_view Uri() const { return m_name->uri; }
    [[nodiscard]] std::uint32_t PrefixLength() const { return m_name->prefixLength; }
    /// Characters, comment, attribute value, instruction data; "" for what takes children.
    [[nodiscard]] std::string_view Content() const {
        return TakesChildren() ? std::string_view() : std::string_view(m_characters, m_length);
    }

    /// Whether it may have other nodes below it.
    [[nodiscard]] bool TakesChildren() const {
        return type == NodeType::Element || type == NodeType::Document ||
               type == NodeType::Fragment;
    }
    [[nodiscard]] Node* FirstChild() const { return TakesChildren() ? m_firstChild : nullptr; }
    [[nodiscard]] Node* FirstAttribute() const {
        return type == NodeType::Element ? m_firstAttribute : nullptr;
    }
    /// The neighbours among the parent's children, or among its attributes.
    [[nodiscard]] Node* Next() const { return m_next; }
    [[nodiscard]] Node* Previous() const {
        return m_previous != nullptr && m_previous->m_next == this ? m_previous : nullptr;
    }

private:
    friend class Tree;
    friend class NodePool;
    friend class NodeList;

    Node* m_previous = nullptr; ///< the first of several has the last one here
    Node* m_next = nullptr;
    const NodeName* m_name = &kNoName;
    union {
        Node* m_firstChild = nullptr;
        const char* m_characters;
    };
    union {
        Node* m_firstAttribute = nullptr;
        std::size_t m_length;
    };
    std::atomic<std::uint32_t> m_holders = 0; ///< handles may be let go of by any thread

public:
    NodeType type = NodeType::None;

private:
    bool m_isAlive = false; ///< while a tree is tidied up
};
static_assert(sizeof(Node) == 64, "a file of many elements takes as many of these");

/// Name without prefix; "" for the default namespace declaration and for nodes without a name.
std::string_view BaseName(const Node& node);
std::string_view Prefix(const Node& node);
/// Name as the platform shows it: "#text" and its like for nodes without one.
std::string_view ShownName(const Node& node);
/// Whether the attribute declares a namespace.
bool IsDeclaration(const Node& attribute);

/// Everything that a reader of the node sees: all text and CDATA below it, exactly, in order; for
/// other kinds their own content. Comments and instructions inside are left out.
/// A node with a single text answers with that text itself, otherwise `scratch` holds the result.
std::string_view Text(const Node& node, std::string& scratch);

/// The node after `node` in document order within `top`, or null. No recursion, so that no tree
/// is too deep for it.
const Node* NextInOrder(const Node& node, const Node& top);
inline Node* NextInOrder(Node& node, const Node& top) {
    return const_cast<Node*>(NextInOrder(static_cast<const Node&>(node), top));
}

/// The node without parent above the node: the document, or the top of what was taken out of it.
Node& Top(Node& node);

/// The attribute with this qualified name, or null.
Node* FindAttribute(const Node& element, std::string_view name);

// What may come where in an XML 1.0 document. All texts are UTF-8.

/// A name with at most one prefix (Namespaces in XML, production QName).
bool IsQualifiedName(const std::string& text);
/// Characters that XML allows, well-formed UTF-8 throughout.
bool IsXmlText(std::string_view text);
bool IsComment(std::string_view text);
bool IsInstruction(std::string_view target, std::string_view data);
/// Whether the document stays well-formed with that text in the node. The XML declaration does not
/// change.
bool MayHold(const Node& node, const std::string& text);

} // namespace nqp2::dom
