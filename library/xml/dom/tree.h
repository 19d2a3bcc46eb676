// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/arena.h"
#include "xml/dom/attribute_index.h"
#include "xml/dom/node.h"
#include "xml/dom/query_cache.h"
#include "xml/dom/select.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

namespace nqp2::dom {

/// The nodes of one document: makes them, links them, changes them. Owned through shared
/// pointers; pointers to its nodes share that ownership, so a tree lives as long as any of them.
/// One thread at a time; only pointers may be let go of by others.
class Tree : public std::enable_shared_from_this<Tree> {
public:
    Tree();
    ~Tree();
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    [[nodiscard]] Node& DocumentNode() { return m_document; }
    /// The document element, or null.
    [[nodiscard]] Node* Root() const;
    /// Bytes that the tree's nodes and texts take.
    [[nodiscard]] std::size_t BytesUsed() const { return m_nodes.Used() + m_texts.Used(); }
    /// Grows with every change, so that what was derived from the tree can tell that it is stale.
    [[nodiscard]] std::uint64_t Version() const { return m_version; }

    /// Empties the tree. Only for a tree with no other holder.
    void Clear() noexcept;
    /// Takes everything out of the document, where others may still hold it.
    void TakeOutAll() noexcept;
    /// Gives back what was taken out or replaced and is not held, once that has become much:
    /// the tree's memory follows what is alive in it. Before a change, while every node that is
    /// used is in the document or is held.
    void Tidy() noexcept;

    /// New nodes have no parent until they are linked.
    Node& CreateElement(std::string_view qualifiedName, std::string_view uri);
    /// The same where the caller knows that the tree hardly has that name yet.
    Node& CreateNewlyNamed(std::string_view qualifiedName, std::string_view uri);
    /// A new element named as one of this tree's is; they share the texts of their names.
    Node& CreateNamedLike(const Node& element);
    Node& CreateCharacters(NodeType type, std::string_view content);
    Node& CreateInstruction(std::string_view target, std::string_view data);
    /// A copy of a whole document with a 0 behind it. What is part of it needs no further copy:
    char* KeepDocument(std::string_view bytes);
    Node& CreateKeptElement(std::string_view keptName, std::string_view keptUri);
    Node& CreateKeptCharacters(NodeType type, std::string_view kept);

    /// Links `child`, which has no parent, before `before` or at the end when that is null. Returns
    /// false, with nothing changed, for a second document element or characters beside it, for a
    /// parent that takes no children and a `before` that is none of them.
    bool Insert(Node& parent, Node& child, Node* before);
    /// The same at the end of a parent that is known to take the child.
    void Append(Node& parent, Node& child);
    /// Takes the node out of its parent; it stays valid.
    void Unlink(Node& node);
    /// Adds an attribute behind the others; its name must be new to the element.
    void AppendAttribute(Node& element, std::string_view name, std::string_view value,
                         std::string_view uri);
    /// The same with texts that are part of the document that the tree keeps.
    void AppendKeptAttribute(Node& element, std::string_view name, std::string_view value,
                             std::string_view uri);
    /// Adds an attribute behind the others, or gives the one of that name a new value.
    void SetAttribute(Node& element, std::string_view name, std::string_view value,
                      std::string_view uri = {});
    /// Replaces what the node holds by one text (or CDATA section, where the node is an element).
    /// Returns false for the document.
    bool SetText(Node& node, std::string_view text, NodeType type = NodeType::Text);
    /// A copy of the node and everything below it, made in this tree; it has no parent.
    Node& Copy(const Node& source);

    /// A pointer that keeps the tree alive, and the node with all that is above and below it.
    std::shared_ptr<Node> Share(Node* node);

    /// How paths name this tree's nodes.
    [[nodiscard]] const SelectionRule& Rule() const { return *m_rule; }
    void SetRule(std::shared_ptr<const SelectionRule> rule) noexcept;

    QueryCache& Queries() { return m_queries; }

private:
    Node& Create(NodeType type, const NodeName& name = kNoName);
    /// Where texts come from: part of the document that the tree keeps, or to be copied.
    enum class From { Document, Elsewhere };
    const NodeName& NewName(std::string_view text, std::string_view uri, From from);
    /// The same name again, where it was met of late.
    const NodeName& KeepName(std::string_view text, std::string_view uri,
                             From from = From::Elsewhere);
    void Attach(Node& element, const NodeName& name, std::string_view kept);
    void Hold(Node& node, std::string_view content);
    static void HoldKept(Node& node, std::string_view kept) noexcept;
    static void Link(Node*& first, Node& node, Node* before) noexcept;
    static void TakeOut(Node*& first, Node& node) noexcept;
    Node& CopyAlone(const Node& source);
    /// A node came into the tree or left it, with all that is below it.
    void NoteMove(const Node& node) noexcept {
        ++m_version;
        m_queries.NoteMove(node);
    }

    void MarkAlive() noexcept;
    static void MarkBelow(Node& top) noexcept;
    void MoveTexts();

    NodePool m_nodes;
    Arena m_texts;
    Node m_document;
    std::uint64_t m_version = 0;
    /// What a change leaves behind is looked for when the tree has grown by this and to twice its
    /// size.
    static constexpr std::size_t kTidyStep = std::size_t{256} * 1024;
    std::size_t m_tidyAt = 0; ///< bytes in use
    std::shared_ptr<const SelectionRule> m_rule;
    QueryCache m_queries;
    AttributeIndex m_attributes;

    /// Names that were met of late: a document repeats few of them many times.
    static constexpr std::size_t kKnownNames = 64;
    std::array<const NodeName*, kKnownNames> m_known{};
    std::string_view m_lastUri; ///< most names share one namespace: its text is kept once
};

} // namespace nqp2::dom
