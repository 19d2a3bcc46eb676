// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/search.h"

#include "catalogue/search_words.h"
#include "catalogue/select.h"
#include "catalogue/words.h"
#include "console/console.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace nqp2::catalogue {
namespace {

constexpr struct {
    std::string_view name;
    const char* index;
    const char* order;
} kSorts[] = {{"newest", "clip_start", "c.start DESC, c.id DESC"},
              {"oldest", "clip_start", "c.start, c.id"},
              {"name", "clip_name", "c.name, c.id"}};

/// `isRare`: few clips are so, and an index knows them.
constexpr struct {
    std::string_view name;
    const char* condition;
    bool isRare;
} kStates[] = {
    {"incomplete", "c.id IN (SELECT clip_id FROM holding WHERE file_gaps > 0)", true},
    {"missing-segment", "c.id IN (SELECT clip_id FROM holding WHERE segment_gaps > 0)", true},
    {"not-ingested",
     "NOT EXISTS (SELECT 1 FROM holding h WHERE h.clip_id = c.id AND h.is_ingested = 1)", false},
    {"one-copy", "(SELECT count(*) FROM holding h WHERE h.clip_id = c.id) = 1", false},
};

constexpr struct {
    std::string SearchOptions::*value;
    std::string_view mark;
} kMarks[] = {{&SearchOptions::camera, kCameraMark},
              {&SearchOptions::codec, kCodecMark},
              {&SearchOptions::rate, kRateMark}};

template <class Rows>
const auto& RowNamed(const Rows& rows, std::string_view name, std::string_view option) {
    const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                         [name](const auto& each) { return each.name == name; });
    if (row == std::end(rows)) {
        throw tool::Failure(std::string(option) + ' ' + std::string(name), "is not known", "",
                            tool::kUsage);
    }
    return *row;
}

/// Whether two digits of a date, where it has them, are in a range.
bool IsWithin(std::string_view date, std::size_t at, std::string_view least,
              std::string_view most) {
    const std::string_view digits = date.substr(std::min(at, date.size()), 2);
    return digits.empty() || (digits >= least && digits <= most);
}

/// Digits where a date has them: "2009-05-03T14:00:00" or the beginning of it.
bool IsDate(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    constexpr std::size_t kLengths[] = {4, 7, 10, 13, 16, 19};
    return std::find(std::begin(kLengths), std::end(kLengths), text.size()) != std::end(kLengths) &&
           std::equal(text.begin(), text.end(), kForm.begin(),
                      [](char has, char form) {
                          return form == '0' ? has >= '0' && has <= '9' : has == form;
                      }) &&
           IsWithin(text, kForm.find('-') + 1, "01", "12") &&
           IsWithin(text, kForm.rfind('-') + 1, "01", "31");
}

std::string DateIn(const std::string& text, std::string_view option) {
    if (!text.empty() && !IsDate(text)) {
        throw tool::Failure(std::string(option) + ' ' + text, "is no date",
                            "expected 2009, 2009-05, 2009-05-03 or 2009-05-03T14:00", tool::kUsage);
    }
    return text;
}

/// All words, those of the filters included.
WordQuery QueryOf(const SearchOptions& options) {
    WordQuery query = ReadSearchWords(options.words);
    for (const auto& [value, mark] : kMarks) {
        if (!(options.*value).empty()) {
            query.push_back({{MarkedWord(mark, options.*value)}, true, false});
        }
    }
    const bool isOnlyExcluded =
        !query.empty() && std::all_of(query.begin(), query.end(),
                                      [](const WordTerm& each) { return each.isExcluded; });
    if (isOnlyExcluded) {
        throw tool::Failure("search for " + options.words, "is not understood",
                            "give a word that is to be found as well", tool::kUsage);
    }
    return query;
}

/// A term as it stands among the words of a clip that has it.
std::string PaddedText(const WordTerm& term) {
    std::string text;
    for (const std::string& word : term.words) {
        text += ' ' + word;
    }
    return term.isPrefix ? text : text + ' ';
}

/// Whether so few clips have the words that these are asked for first.
bool AreFew(Connection& connection, const std::string& query, std::int64_t few) {
    const char* const statement = connection.Words().countByWords;
    std::int64_t count = 0;
    if (*statement != '\0') {
        connection.Run(statement, {query, few + 1}, [&](const Row& row) { count = row.Number(0); });
    }
    return count <= few;
}

} // namespace

std::vector<FoundClip> Search(Connection& connection, const SearchOptions& options) {
    const Dialect& dialect = connection.Words();
    const auto& sort = RowNamed(kSorts, options.sort.empty() ? "newest" : options.sort, "--sort");
    const WordQuery words = QueryOf(options);
    const std::string query = words.empty() ? "" : dialect.queryText(words);
    const bool isRare =
        !options.state.empty() && RowNamed(kStates, options.state, "--state").isRare;
    Select select(SelectClips());
    if (!words.empty() && AreFew(connection, query, options.few)) {
        select.From(dialect.clipsByWords + select.Put(query) + dialect.clipsByWordsEnd);
    } else {
        const bool isOrdered = !isRare && *dialect.indexedBy != '\0';
        select.From("clip c" + (isOrdered ? dialect.indexedBy + std::string(sort.index) : ""));
        for (const WordTerm& term : words) {
            select.Where(dialect.placeInWords + select.Put(PaddedText(term)) +
                         (term.isExcluded ? ") = 0" : ") > 0"));
        }
    }
    if (const std::string from = DateIn(options.from, "--from"); !from.empty()) {
        select.Where("c.start >= " + select.Put(from));
    }
    if (const std::string to = DateIn(options.to, "--to"); !to.empty()) {
        // Whatever a date has behind this comes before it.
        select.Where("c.start < " + select.Put(to + '~') + " AND c.start <> ''");
    }
    if (!options.state.empty()) {
        select.Where(RowNamed(kStates, options.state, "--state").condition);
    }
    select.End(std::string(" ORDER BY ") + sort.order + " LIMIT " + select.Put(options.limit));
    return FindClips(connection, select);
}

} // namespace nqp2::catalogue
