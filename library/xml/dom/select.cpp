// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/select.h"

#include "xml/dom/path_walk.h"
#include "xml/dom/tree.h"
#include "xml/dom/xpath.h"

#include <memory>
#include <string>

namespace nqp2::dom {
namespace {

std::vector<Node*> Evaluate(Node& context, std::string_view path) {
    Tree& tree = *context.tree;
    Node& top = Top(context);
    std::unique_ptr<XPathView>& view = tree.View();
    if (view == nullptr || !view->IsCurrent(top)) {
        view = std::make_unique<XPathView>(top, tree.Rule());
    }
    return view->Evaluate(context, std::string(path), tree.Rule());
}

std::vector<Node*> Select(Node& context, std::string_view path, bool onlyFirst) {
    const std::optional<SimplePath> simple = ParseSimplePath(path);
    return simple ? WalkPath(*simple, context, context.tree->Rule(), onlyFirst)
                  : Evaluate(context, path);
}

} // namespace

Node* SelectFirst(Node& context, std::string_view path) {
    const std::vector<Node*> found = Select(context, path, true);
    return found.empty() ? nullptr : found.front();
}

std::vector<Node*> SelectAll(Node& context, std::string_view path) {
    return Select(context, path, false);
}

} // namespace nqp2::dom
