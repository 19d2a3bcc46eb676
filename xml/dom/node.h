// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace nqp2::dom {

class Tree;

/// What names a namespace declaration: alone, or as the prefix of the prefix that is bound.
inline constexpr std::string_view kXmlns = "xmlns";

enum class NodeType : std::uint8_t {
    Element = 1,
    Attribute = 2,
    Text = 3,
    CData = 4,
    ProcessingInstruction = 7,
    Comment = 8,
    Document = 9,
    Fragment = 11,
};

/// One node of a tree; lives in its tree's arena, so a node that was taken out of the tree stays
/// valid as long as the tree does. All text is UTF-8 and stays where it is.
/// Namespace declarations stand among an element's attributes under their own names ("xmlns",
/// "xmlns:p"). `parent` of an attribute is its element.
struct Node {
    Tree* tree = nullptr;
    Node* parent = nullptr;
    Node* previous = nullptr;
    Node* next = nullptr;
    Node* firstChild = nullptr;
    Node* lastChild = nullptr;
    Node* firstAttribute = nullptr;
    std::string_view name;    ///< qualified name; target of a processing instruction
    std::string_view content; ///< characters, comment, attribute value, instruction data
    std::string_view uri;     ///< namespace of an element or attribute, "" for none
    std::uint32_t prefixLength = 0;
    NodeType type = NodeType::Element;
};

/// Name without prefix; "" for the default namespace declaration and for nodes without a name.
std::string_view BaseName(const Node& node);
std::string_view Prefix(const Node& node);
/// Name as the platform shows it: "#text" and its like for nodes without one.
std::string_view NodeName(const Node& node);
/// Whether other nodes may stand below it.
bool TakesChildren(const Node& node);
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

} // namespace nqp2::dom
