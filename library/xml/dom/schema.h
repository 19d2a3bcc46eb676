// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"
#include "xml/dom/parse_error.h"

#include <cstddef>
#include <string>

namespace nqp2::dom {

inline constexpr std::size_t kLargestSchema = std::size_t{256} * 1024; ///< bytes

/// Holds a document against the bytes of an XML Schema (W3C XML Schema 1.0). The error is empty
/// when it fits.
/// A schema that is none, is one for a namespace or wants other files is an error as well: nothing
/// is opened. So is one beyond kLargestSchema, one whose content models would take long to compile,
/// and one that is too deep: a stack of 256 KiB is enough for all that are taken.
ParseError Validate(const Node& document, const std::string& schema);

} // namespace nqp2::dom
