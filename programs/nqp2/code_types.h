// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/FrameRate.h"

#include <string>
#include <vector>

namespace nqp2::tool {

enum class CodeTypes {
    Any,
    Recorded, ///< that the worker records: those of P2 cards
};

/// Their names, in the order of their numbers.
std::vector<std::string> CodeTypeNames(CodeTypes which);
/// A paragraph that lists them, for help and manual.
std::string CodeTypeNote(CodeTypes which);

/// The type that a user gave by name, with or without what all names begin with, or by number.
/// Numbers without a name are taken: the card may hold formats that have none. Throws Failure for
/// any other text.
eCodeType CodeTypeFromArgument(const std::string& text);

/// The rate that a code type's name ends in; null for a type without a name.
const FrameRate* RateInName(eCodeType type);

} // namespace nqp2::tool
