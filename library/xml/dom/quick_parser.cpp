// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/quick_parser.h"

#include "xml/dom/quick_tokenizer.h"

namespace nqp2::dom {
namespace {

/// Builds the tree.
class TreeSink {
public:
    TreeSink(Tree& tree, std::size_t maxBytes)
        : m_tree(tree), m_maxBytes(maxBytes), m_current(&tree.DocumentNode()) {}

    void Declaration(std::string_view data) {
        m_tree.Append(*m_current, m_tree.CreateInstruction("xml", data));
    }
    bool Open(const quick::Name& name, std::string_view uri,
              std::span<const quick::Attribute> attributes) {
        Node& element = m_tree.CreateKeptElement(name.text, uri);
        m_tree.Append(*m_current, element);
        m_current = &element;
        // Declarations first, as libxml2 tells them.
        for (const bool areDeclarations : {true, false}) {
            for (const quick::Attribute& each : attributes) {
                if (each.name.IsDeclaration() == areDeclarations) {
                    m_tree.AppendKeptAttribute(element, each.name.text, each.value, each.uri);
                }
            }
        }
        return IsWithinBudget();
    }
    void Close() { m_current = m_current->parent; }
    [[nodiscard]] std::string_view OpenName() const { return m_current->Name(); }
    bool Characters(NodeType type, std::string_view text) {
        m_tree.Append(*m_current, m_tree.CreateKeptCharacters(type, text));
        return IsWithinBudget();
    }
    bool Comment(std::string_view text) { return Characters(NodeType::Comment, text); }
    static std::size_t Leap(const char* /*at*/, int& /*depth*/) { return 0; }

private:
    [[nodiscard]] bool IsWithinBudget() const { return m_tree.BytesUsed() <= m_maxBytes; }

    Tree& m_tree;
    std::size_t m_maxBytes;
    Node* m_current;
};

} // namespace

bool ParseQuickly(std::string_view bytes, Tree& tree, std::size_t maxBytes) {
    tree.Clear();
    if (bytes.size() > kLargestQuickDocument) {
        return false;
    }
    TreeSink sink(tree, maxBytes);
    if (quick::Tokenizer(sink, tree.KeepDocument(bytes), bytes.size()).Document()) {
        return true;
    }
    tree.Clear();
    return false;
}

} // namespace nqp2::dom
