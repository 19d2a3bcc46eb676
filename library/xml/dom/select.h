// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::dom {

/// How the names in a path are held against the names in a document.
struct SelectionRule {
    enum class Names {
        Qualified, ///< as written, prefix and all, whatever namespace it has
        Namespace, ///< XPath 1.0: by namespace; prefixes must be bound
    };
    Names names = Names::Qualified;
    /// Prefix and namespace pairs that paths may use (Names::Namespace).
    std::vector<std::pair<std::string, std::string>> bindings;

    [[nodiscard]] const std::string* UriOf(std::string_view prefix) const;
};

/// Reads a list of bindings, xmlns:p='uri' or xmlns:p="uri" separated by blanks. Nothing for any
/// other text. A declaration without prefix is accepted and binds nothing.
std::optional<std::vector<std::pair<std::string, std::string>>>
ParseBindings(std::string_view declarations);

/// The first node that the path selects from `context` under its tree's selection rule, or null.
/// Throws _com_error (E_FAIL) for a path that cannot be evaluated.
Node* SelectFirst(Node& context, std::string_view path);
/// All of them in document order.
std::vector<Node*> SelectAll(Node& context, std::string_view path);

} // namespace nqp2::dom
