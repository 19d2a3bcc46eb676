// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::dom {

class XPathView;

/// One step of a path made ready for comparing.
struct NameTest {
    std::string_view name; ///< qualified or local name, as the rule compares
    std::string_view uri;
    bool byNamespace = false;

    [[nodiscard]] bool Fits(const Node& node) const {
        if (node.type != NodeType::Element) {
            return false;
        }
        return byNamespace ? BaseName(node) == name && node.Uri() == uri : node.Name() == name;
    }
};

/// What queries found out about a tree, for the next ones: a reader asks dozens of paths that start
/// with the same name. What it gives is right for the tree at the time of the call; it may be used
/// until the tree is changed or another query is asked. The anchors outlive changes that take none
/// of them away and bring none: who edits and asks in turn looks through the tree anew only when
/// elements of the name that is asked for come or go, or large parts of the tree.
class QueryCache {
public:
    QueryCache();
    ~QueryCache();
    QueryCache(const QueryCache&) = delete;
    QueryCache& operator=(const QueryCache&) = delete;

    /// Where the elements of one name are.
    struct Anchors {
        std::vector<Node*> nodes; ///< in document order
        bool nested = false;      ///< one is inside another
    };
    const Anchors& AnchorsOf(Node& top, const NameTest& test);
    /// The node, with all that is below it, came into the tree or left it.
    void NoteMove(const Node& node) noexcept {
        if (m_top != nullptr && node.type == NodeType::Element && MayHoldAnchors(node)) {
            DropAnchors();
        }
    }
    void DropAnchors() noexcept { m_top = nullptr; }
    /// The form of the tree that general XPath expressions are evaluated on.
    XPathView& ViewOf(Node& top);

    /// Gives back the view and what an unusually large document took.
    void LetGo() noexcept;

private:
    [[nodiscard]] bool MayHoldAnchors(const Node& top) const noexcept;

    const Node* m_top = nullptr; ///< the anchors are those below it; null: there are none yet
    std::string m_name;
    std::string m_uri;
    bool m_byNamespace = false;
    Anchors m_anchors;
    std::unique_ptr<XPathView> m_view;
};

} // namespace nqp2::dom
