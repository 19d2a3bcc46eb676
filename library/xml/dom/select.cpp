// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/select.h"

#include "xml/dom/path_walk.h"
#include "xml/dom/tree.h"
#include "xml/dom/xpath.h"

#include <algorithm>

namespace nqp2::dom {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view SkipBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Takes NAME='VALUE' off the front of `text`.
bool TakeAttribute(std::string_view& text, std::string_view& name, std::string_view& value) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals + 1 >= text.size()) {
        return false;
    }
    const char quote = text[equals + 1];
    if (quote != '\'' && quote != '"') {
        return false;
    }
    const std::size_t end = text.find(quote, equals + 2);
    if (end == std::string_view::npos) {
        return false;
    }
    name = text.substr(0, equals);
    if (name.find_first_of(kBlanks) != std::string_view::npos) {
        return false;
    }
    value = text.substr(equals + 2, end - equals - 2);
    text.remove_prefix(end + 1);
    return true;
}

std::vector<Node*> Select(Node& context, std::string_view path, bool onlyFirst) {
    Tree& tree = *context.tree;
    const std::optional<SimplePath> simple = ParseSimplePath(path);
    return simple ? WalkPath(*simple, context, tree.Rule(), onlyFirst)
                  : tree.Queries()
                        .ViewOf(Top(context))
                        .Evaluate(context, std::string(path), tree.Rule());
}

} // namespace

const std::string* SelectionRule::UriOf(std::string_view prefix) const {
    static const std::string xmlNamespace = "http://www.w3.org/XML/1998/namespace";
    if (prefix == "xml") {
        return &xmlNamespace; // bound from the start, and to nothing else
    }
    const auto found = std::find_if(bindings.begin(), bindings.end(),
                                    [&](const auto& binding) { return binding.first == prefix; });
    return found != bindings.end() ? &found->second : nullptr;
}

std::optional<std::vector<std::pair<std::string, std::string>>>
ParseBindings(std::string_view declarations) {
    std::vector<std::pair<std::string, std::string>> bindings;
    for (std::string_view left = SkipBlanks(declarations); !left.empty(); left = SkipBlanks(left)) {
        std::string_view name;
        std::string_view value;
        if (!TakeAttribute(left, name, value) || !name.starts_with(kXmlns)) {
            return std::nullopt;
        }
        name.remove_prefix(kXmlns.size());
        if (name.empty()) {
            continue;
        }
        if (name.size() < 2 || name.front() != ':') {
            return std::nullopt;
        }
        bindings.emplace_back(name.substr(1), value);
    }
    return bindings;
}

Node* SelectFirst(Node& context, std::string_view path) {
    const std::vector<Node*> found = Select(context, path, true);
    return found.empty() ? nullptr : found.front();
}

std::vector<Node*> SelectAll(Node& context, std::string_view path) {
    return Select(context, path, false);
}

} // namespace nqp2::dom
