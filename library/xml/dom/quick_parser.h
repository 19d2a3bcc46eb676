// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/tree.h"

#include <cstddef>
#include <string_view>

namespace nqp2::dom {

/// The largest that is read quickly. Whatever fits into it keeps the limits of libxml2 on texts and on
/// tables of names, which begin at 10 MB.
inline constexpr std::size_t kLargestQuickDocument = std::size_t{4} * 1024 * 1024;

/// Reads plain documents straight into a tree, at a fraction of libxml2's cost: what cameras write.
///
/// It takes: at most 4 MiB of UTF-8, with or without byte-order mark; an XML declaration of
/// version 1.0; elements with ASCII names, at most 200 within each other and with at most 24
/// attributes; namespaces; text, comments and CDATA sections; the five references that need no
/// declaration ("&amp;" and its like).
///
/// It leaves to libxml2: document types, processing instructions, numeric references, other
/// encodings, control characters in values, the prefix "xml", names that are not ASCII, whatever is
/// larger or deeper, trees of more than `maxBytes` bytes, and every document that is not well-formed: it refuses none by itself, so that
/// each refusal, with its code, line and text, is libxml2's. What it takes gives the very tree that
/// libxml2's events give.
///
/// Returns false, with an empty tree, for what it does not take. Throws std::bad_alloc.
bool ParseQuickly(std::string_view bytes, Tree& tree, std::size_t maxBytes);

} // namespace nqp2::dom
