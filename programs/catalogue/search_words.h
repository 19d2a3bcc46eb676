// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nqp2::catalogue {

/// Words that stand behind each other, such as WordsOf makes.
struct WordTerm {
    std::vector<std::string> words;
    bool isPrefix = false; ///< the last is the beginning of one
    bool isExcluded = false;
};

/// What a clip must have, all of it, and what it must not have.
struct WordQuery : std::vector<WordTerm> {};

/// Reads what the user searches for: words, "words behind each other", -word, beginning*. Throws
/// tool::Failure of wrong usage for what cannot be searched for.
WordQuery ReadSearchWords(std::string_view text);

} // namespace nqp2::catalogue
