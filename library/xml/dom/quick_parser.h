// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/tree.h"

#include <cstddef>
#include <string_view>

namespace nqp2::dom {

/// The largest that is read quickly. Whatever fits into it keeps the limits of libxml2 on texts and
/// on tables of names, which begin at 10 MB.
inline constexpr std::size_t kLargestQuickDocument = std::size_t{4} * 1024 * 1024;

/// Reads plain documents straight into a tree: those that quick_tokenizer.h takes, up to that size
/// and to trees of `maxBytes` bytes. They give the very tree that libxml2's events give; all others
/// are left to libxml2.
///
/// Returns false, with an empty tree, for what it does not take. Throws std::bad_alloc.
bool ParseQuickly(std::string_view bytes, Tree& tree, std::size_t maxBytes);

} // namespace nqp2::dom
