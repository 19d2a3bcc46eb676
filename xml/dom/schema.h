// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"
#include "xml/dom/parse_error.h"

#include <string>

namespace nqp2::dom {

/// Holds a document against the bytes of an XML Schema (W3C XML Schema 1.0). The error is empty
/// when it fits.
/// A schema that is none, is one for a namespace or wants other files is an error as well: nothing
/// is opened. So is one beyond 256 KiB, or whose content models would take long to compile.
ParseError Validate(const Node& document, const std::string& schema);

} // namespace nqp2::dom
