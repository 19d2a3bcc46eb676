// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"
#include "xml/dom/select.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// Answers the paths that readers ask for (//A/B/C, /A/B, A/B) by walking the tree, which is much
/// faster than evaluating them.
namespace nqp2::dom {

/// A path of plain names.
struct SimplePath {
    static constexpr std::size_t kMaxSteps = 16;

    enum class Start { Context, Document, Anywhere };
    Start start = Start::Context;
    std::array<std::string_view, kMaxSteps> steps; ///< views into the text that was parsed
    std::size_t count = 0;
};

/// Nothing when the text is any other expression, or has more steps than are kept.
std::optional<SimplePath> ParseSimplePath(std::string_view path);

/// Finds what the path selects from `context`, in document order; stops after the first when
/// `onlyFirst`. Throws _com_error for a prefix that the rule does not bind.
std::vector<Node*> WalkPath(const SimplePath& path, Node& context, const SelectionRule& rule,
                            bool onlyFirst);

/// A fixed set of relative paths (A/B/C) that are looked for together, in one pass over the
/// elements below a node. What each finds is the first node in document order: just what asking
/// path by path would give.
class PathSet {
public:
    explicit PathSet(std::span<const std::string_view> paths);

    [[nodiscard]] std::size_t Size() const { return m_paths.size(); }
    /// Fills `found`, one slot a path, with the nodes or null.
    void Find(const Node& below, std::span<Node*> found) const;
    /// The same below every node that `base` selects from a document, as if each path were asked
    /// for behind the base. Returns those nodes.
    std::vector<Node*> FindBehind(std::string_view base, Node& top, std::span<Node*> found) const;

private:
    struct Name {
        std::string_view name;
        int ends = -1; ///< index of the path that ends here
        std::vector<Name> below;

        void Add(std::string_view path, int index);
    };
    static void Gather(const Node& element, const Name& names, std::span<Node*> found);

    std::vector<std::string_view> m_paths;
    Name m_root;
};

} // namespace nqp2::dom
