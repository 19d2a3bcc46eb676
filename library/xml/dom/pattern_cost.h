// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::dom {

/// How long values and the whole of them are, in bytes.
struct ValueSizes {
    double longest = 0;
    double all = 0;
};

/// Whether values of those sizes can be held against a pattern of a schema. libxml2 tries one way
/// after the other through a pattern that offers several, without an end that anybody would await.
bool IsAffordablePattern(const std::string& pattern, const ValueSizes& values);

} // namespace nqp2::dom
