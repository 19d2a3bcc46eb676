// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <libxml/tree.h>

#include <string>

namespace nqp2::dom {

/// Whether a schema can be compiled at little cost. Definitions that name others, which name others
/// again, make content models that grow with every level as powers do; so do unions and groups of
/// attributes. What they come to is counted, not made.
bool IsAffordable(const xmlDoc& schema);

/// How long values and the whole of them are, in bytes.
struct ValueSizes {
    double longest = 0;
    double all = 0;
};

/// Whether values of those sizes can be held against a pattern of a schema. libxml2 tries one way
/// after the other through a pattern that offers several, for longer than any caller can wait.
bool IsAffordablePattern(const std::string& pattern, const ValueSizes& values);

} // namespace nqp2::dom
