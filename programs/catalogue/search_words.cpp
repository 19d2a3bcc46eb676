// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/search_words.h"

#include "catalogue/words.h"
#include "console/console.h"

#include <algorithm>
#include <cstddef>

namespace nqp2::catalogue {
namespace {

constexpr std::size_t kMostTerms = 100;
constexpr std::string_view kBlanks = " \t\r\n";

[[noreturn]] void Refuse(std::string_view text, std::string_view problem, std::string_view reason) {
    throw tool::Failure("search for " + std::string(text), problem, reason, tool::kUsage);
}

/// Takes the text of the next term from the front, without its quotes.
std::string TakeTerm(std::string_view& rest, std::string_view whole) {
    const bool isQuoted = rest.front() == '"';
    rest.remove_prefix(isQuoted ? 1 : 0);
    std::size_t end = isQuoted ? rest.find('"') : rest.find_first_of(kBlanks);
    if (isQuoted && end == std::string_view::npos) {
        Refuse(whole, "is not understood", "a quotation mark is not closed");
    }
    end = std::min(end, rest.size());
    std::string term(rest.substr(0, end));
    rest.remove_prefix(std::min(end + (isQuoted ? 1 : 0), rest.size()));
    if (isQuoted && rest.starts_with('*')) {
        term += '*';
        rest.remove_prefix(1);
    }
    return term;
}

} // namespace

WordQuery ReadSearchWords(std::string_view text) {
    WordQuery query;
    std::string_view rest = text;
    for (std::size_t at = rest.find_first_not_of(kBlanks); at != std::string_view::npos;
         at = rest.find_first_not_of(kBlanks)) {
        rest.remove_prefix(at);
        WordTerm term;
        term.isExcluded = rest.size() > 1 && rest.front() == '-';
        rest.remove_prefix(term.isExcluded ? 1 : 0);
        const std::string written = TakeTerm(rest, text);
        term.isPrefix = written.ends_with('*');
        term.words = WordsOf(written);
        if (term.words.empty()) {
            Refuse(text, "is not understood", "\"" + written + "\" has no letters or digits");
        }
        query.push_back(std::move(term));
    }
    if (query.size() > kMostTerms) {
        Refuse(text, "is too long", "at most " + std::to_string(kMostTerms) + " words");
    }
    return query;
}

} // namespace nqp2::catalogue
