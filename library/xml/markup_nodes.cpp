// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MarkupMSXML.h"

#include "platform/guard.h"
#include "platform/unicode.h"
#include "xml/dom/document.h"
#include "xml/dom/node.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

using nqp2::dom::Node;
using nqp2::dom::NodeType;
using nqp2::dom::Tree;
using nqp2::platform::Guarded;
using nqp2::platform::Utf8FromText;

namespace {

struct KindOfType {
    NodeType type;
    int kind;
};

constexpr KindOfType kKinds[] = {
    {NodeType::Element, CMarkupMSXML::kElementNode},
    {NodeType::Text, CMarkupMSXML::kTextNode},
    {NodeType::CData, CMarkupMSXML::kCDataNode},
    {NodeType::ProcessingInstruction, CMarkupMSXML::kInstructionNode},
    {NodeType::Comment, CMarkupMSXML::kCommentNode},
};

int KindOf(const Node& node) {
    const auto* const found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [&](const auto& row) { return row.type == node.type; });
    return found != std::end(kKinds) ? found->kind : 0;
}

NodeType TypeOf(int kind) {
    return kind == CMarkupMSXML::kCDataNode ? NodeType::CData : NodeType::Text;
}

struct Instruction {
    std::string_view target;
    std::string_view data;
};

Instruction SplitInstruction(std::string_view text) {
    const std::size_t blank = text.find(' ');
    return blank == std::string_view::npos
               ? Instruction{text, {}}
               : Instruction{text.substr(0, blank), text.substr(blank + 1)};
}

/// A node of the kind, or null when the text cannot be one.
Node* MakeNode(Tree& tree, int kind, const std::string& text, const std::string& uri) {
    switch (kind) {
    case CMarkupMSXML::kElementNode:
        return nqp2::dom::IsQualifiedName(text) ? &tree.CreateElement(text, uri) : nullptr;
    case CMarkupMSXML::kTextNode:
    case CMarkupMSXML::kCDataNode:
        return nqp2::dom::IsXmlText(text) ? &tree.CreateCharacters(TypeOf(kind), text) : nullptr;
    case CMarkupMSXML::kCommentNode:
        return nqp2::dom::IsComment(text) ? &tree.CreateCharacters(NodeType::Comment, text)
                                          : nullptr;
    case CMarkupMSXML::kInstructionNode: {
        const Instruction made = SplitInstruction(text);
        return nqp2::dom::IsInstruction(made.target, made.data)
                   ? &tree.CreateInstruction(made.target, made.data)
                   : nullptr;
    }
    default:
        return nullptr;
    }
}

} // namespace

int CMarkupMSXML::FindNode(int kinds) {
    return Guarded(0, [&] {
        Node* node = m_pMainPos != nullptr     ? m_pMainPos->Next()
                     : m_pParentPos != nullptr ? m_pParentPos->FirstChild()
                                               : nullptr;
        while (node != nullptr && (KindOf(*node) & kinds) == 0) {
            node = node->Next();
        }
        return node != nullptr && SetMainPosPtr(node->tree->Share(node)) != 0 ? KindOf(*node) : 0;
    });
}

int CMarkupMSXML::GetNodeType() noexcept {
    return m_pMainPos != nullptr ? KindOf(*m_pMainPos) : 0;
}

int CMarkupMSXML::AddNode(int kind, const wchar_t* text) noexcept {
    return x_AddNode(x_Place::After, kind, text);
}

int CMarkupMSXML::InsertNode(int kind, const wchar_t* text) noexcept {
    return x_AddNode(x_Place::Before, kind, text);
}

int CMarkupMSXML::x_AddNode(x_Place place, int kind, const wchar_t* text) noexcept {
    return Guarded(0, [&] {
        if (kind == kDocumentTypeNode) {
            m_strError = L"XMLDOM: Document Type is Read-Only";
            return 0;
        }
        if (m_pParentPos == nullptr) {
            return 0;
        }
        ResetChildPos();
        Tree& tree = *m_pParentPos->tree;
        tree.Tidy();
        Node* const node =
            MakeNode(tree, kind, Utf8FromText(text), Utf8FromText(m_strDefaultNamespace.View()));
        return node != nullptr ? x_PlaceNode(x_Level::Main, place, tree.Share(node)) : 0;
    });
}

int CMarkupMSXML::x_SetData(const IXMLDOMNodePtr& node, const wchar_t* value, int cdata) noexcept {
    return Guarded(0, [&] {
        if (node == nullptr) {
            return 0;
        }
        std::string text = Utf8FromText(value);
        if (node->type == NodeType::ProcessingInstruction) {
            const Instruction given = SplitInstruction(text);
            if (given.target != node->Name()) {
                m_strError = L"Specified Target does not match current node";
                return 0;
            }
            text = std::string(given.data);
        }
        node->tree->Tidy();
        const NodeType type = cdata != 0 ? NodeType::CData : NodeType::Text;
        return nqp2::dom::MayHold(*node, text) && node->tree->SetText(*node, text, type) ? 1 : 0;
    });
}

int CMarkupMSXML::AddSubDoc(const wchar_t* xml) noexcept {
    return x_AddSubDoc(x_Level::Main, x_Place::After, xml);
}

int CMarkupMSXML::InsertSubDoc(const wchar_t* xml) noexcept {
    return x_AddSubDoc(x_Level::Main, x_Place::Before, xml);
}

int CMarkupMSXML::AddChildSubDoc(const wchar_t* xml) noexcept {
    return x_AddSubDoc(x_Level::Child, x_Place::After, xml);
}

int CMarkupMSXML::InsertChildSubDoc(const wchar_t* xml) noexcept {
    return x_AddSubDoc(x_Level::Child, x_Place::Before, xml);
}

int CMarkupMSXML::x_AddSubDoc(x_Level level, x_Place place, const wchar_t* xml) noexcept {
    return Guarded(0, [&] {
        const IXMLDOMNodePtr& container = level == x_Level::Main ? m_pParentPos : m_pMainPos;
        if (container == nullptr) {
            return 0;
        }
        CMarkupMSXML part(xml);
        if (part.m_pDoc == nullptr || part.m_pDoc->Content()->Root() == nullptr) {
            m_strError = part.GetError();
            return 0;
        }
        if (level == x_Level::Main) {
            ResetChildPos();
        }
        Tree& tree = *container->tree;
        tree.Tidy();
        return x_PlaceNode(level, place, tree.Share(&tree.Copy(*part.m_pDoc->Content()->Root())));
    });
}
