// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"

#include <string_view>
#include <vector>

namespace nqp2::dom {

/// The first node that the path selects from `context` under its tree's selection rule, or null.
/// Throws _com_error (E_FAIL) for a path that cannot be evaluated.
Node* SelectFirst(Node& context, std::string_view path);
/// All of them in document order.
std::vector<Node*> SelectAll(Node& context, std::string_view path);

} // namespace nqp2::dom
