// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/parse_error.h"
#include "xml/dom/parser.h"
#include "xml/dom/tree.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::dom {

/// What a query selected: a snapshot that survives any change of the tree, with an iterator.
class NodeList {
public:
    NodeList(std::shared_ptr<Tree> tree, std::vector<Node*> nodes)
        : m_tree(std::move(tree)), m_nodes(std::move(nodes)) {
        for (Node* const node : m_nodes) {
            ++node->m_holders;
        }
    }
    ~NodeList() {
        for (Node* const node : m_nodes) {
            --node->m_holders;
        }
    }
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;

    [[nodiscard]] std::size_t Length() const { return m_nodes.size(); }
    /// The node at `index`, or null beyond the end. Does not move the iterator.
    [[nodiscard]] std::shared_ptr<Node> Item(std::size_t index) const {
        return index < m_nodes.size() ? m_tree->Share(m_nodes[index]) : nullptr;
    }
    /// The next node, or null at the end.
    std::shared_ptr<Node> Next() {
        std::shared_ptr<Node> node = Item(m_next);
        m_next += node != nullptr ? 1U : 0U;
        return node;
    }

private:
    std::shared_ptr<Tree> m_tree;
    std::vector<Node*> m_nodes;
    std::size_t m_next = 0;
};

/// A document object: one tree at a time, replaced by each load, with the error of the last load
/// and the rule by which paths name its nodes. Nodes of a replaced tree stay usable as long as
/// one of them is held. One thread at a time.
class Document {
public:
    explicit Document(SelectionRule::Names names);

    /// Loads replace the content whether they succeed or not; a failed one leaves the document
    /// empty. They return whether the document is well-formed; LastError tells the rest.
    bool LoadText(std::string_view utf8);
    bool LoadBytes(std::string_view bytes);
    /// A file by its POSIX path.
    bool LoadFile(const std::string& path);
    /// Empties the document.
    void Clear() noexcept;
    /// Empties it after a load that could not even be carried out.
    void Fail(std::string_view reason) noexcept;
    void FailForMemory() noexcept;

    /// The text of the document as it is saved; nothing when it could not be loaded again, one
    /// without a root included.
    [[nodiscard]] std::optional<std::string> TextToSave() const;
    /// Writes the document; the old file stays whole when that fails. A link is not replaced, nor
    /// the file behind it.
    [[nodiscard]] bool Save(const std::string& path) const;

    [[nodiscard]] const ParseError& LastError() const { return m_error; }
    [[nodiscard]] const std::shared_ptr<Tree>& Content() const { return m_tree; }
    [[nodiscard]] std::shared_ptr<Node> DocumentNode() const;

    /// Queries from the document node. Throw _com_error (E_FAIL) for a path that cannot be
    /// evaluated.
    [[nodiscard]] std::shared_ptr<Node> SelectSingle(std::string_view path) const;
    [[nodiscard]] std::shared_ptr<NodeList> SelectNodes(std::string_view path) const;

    /// Sets which prefixes paths may use, from a list of declarations; an empty text clears them.
    /// A text that is no such list clears them too and returns false.
    bool SetSelectionNamespaces(std::string_view declarations);

private:
    /// Returns false, with the document empty, when there is no memory for a tree of its own.
    bool TakeFreshTree() noexcept;
    template <class Load>
    bool Replace(const Load& load);
    ParseError ReadFile(const std::string& path);
    bool TakeBufferQuickly();

    std::shared_ptr<const SelectionRule> m_rule;
    Parser m_parser;
    std::shared_ptr<Tree> m_tree;
    ParseError m_error;
    std::string m_buffer; ///< content of the file that is read; kept for the next one
};

/// The list of what a path selects from a node; as Document::SelectNodes.
std::shared_ptr<NodeList> ListOf(Node& context, std::string_view path);

} // namespace nqp2::dom
