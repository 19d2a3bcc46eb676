// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace nqp2::dom {

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
