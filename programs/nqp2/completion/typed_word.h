// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::tool {

/// Whether a shell has already taken quotes and backslashes away.
enum class Quotes { Kept, Gone };

/// What a word means that is typed at a shell: without its quotes and backslashes, with the user's
/// folder for "~", "$HOME" and "${HOME}". Nothing else is expanded, and nothing is run.
std::string MeaningOfTyped(const std::string& word, Quotes quotes);

} // namespace nqp2::tool
