// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/tree.h"

#include <string_view>

namespace nqp2::dom {

/// Reads plain documents straight into a tree: those that quick_tokenizer.h takes. They give the
/// very tree that libxml2's events give; all others are left to libxml2.
///
/// Returns false, with an empty tree, for what it does not take. Throws std::bad_alloc.
bool ParseQuickly(std::string_view bytes, Tree& tree);

} // namespace nqp2::dom
