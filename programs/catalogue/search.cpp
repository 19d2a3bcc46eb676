// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/search.h"

#include "catalogue/clip_facts.h"
#include "catalogue/search_words.h"
#include "catalogue/words.h"
#include "console/console.h"
#include "NQP2ParserU/TextBytes.h"

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

/// Digits where a date has them: "2009-05-03T14:00:00" or the beginning of it.
bool IsDate(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    constexpr std::size_t kLengths[] = {4, 7, 10, 13, 16, 19};
    return std::find(std::begin(kLengths), std::end(kLengths), text.size()) != std::end(kLengths) &&
           std::equal(text.begin(), text.end(), kForm.begin(), [](char has, char form) {
               return form == '0' ? has >= '0' && has <= '9' : has == form;
           });
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

/// A statement in the making: its text is of words of ours, whatever comes from outside is a
/// parameter.
class Select {
public:
    explicit Select(std::string from) : m_text(std::move(from)) {}

    std::string Put(Parameter parameter) {
        m_parameters.push_back(std::move(parameter));
        return "$" + std::to_string(m_parameters.size());
    }
    void Where(const std::string& condition) {
        m_text += (m_hasWhere ? " AND " : " WHERE ") + condition;
        m_hasWhere = true;
    }
    /// A text that may have brought its own WHERE.
    void From(const std::string& text) {
        m_text += text;
        m_hasWhere = m_hasWhere || text.find(" WHERE ") != std::string::npos;
    }
    void End(const std::string& text) { m_text += text; }
    [[nodiscard]] const std::string& Text() const { return m_text; }
    [[nodiscard]] const Parameters& Values() const { return m_parameters; }

private:
    std::string m_text;
    Parameters m_parameters;
    bool m_hasWhere = false;
};

const std::string& SelectClips() {
    // The words are there to be found, not to be shown.
    static const std::string kSelect =
        "SELECT c.id, " +
        NamesOf(std::span(kClipColumns).first(std::size(kClipColumns) - 1), "c.") + " FROM ";
    return kSelect;
}

std::vector<FoundClip> RunSelect(Connection& connection, const Select& select) {
    std::vector<FoundClip> found;
    connection.Run(select.Text(), select.Values(), [&](const Row& row) {
        FoundClip& each = found.emplace_back();
        each.id = row.Number(0);
        ReadValues(row, 1, std::span(kClipColumns).first(std::size(kClipColumns) - 1), each.clip);
    });
    return found;
}

std::vector<ClipPlace> PlacesOf(Connection& connection, const char* condition,
                                const Parameter& parameter) {
    static const std::string kSelect = "SELECT k.id, " + NamesOf(kCardColumns, "k.") + ", " +
                                       NamesOf(kHoldingColumns, "h.") +
                                       " FROM holding h JOIN card k ON k.id = h.card_id WHERE ";
    std::vector<ClipPlace> places;
    connection.Run(kSelect + condition + " ORDER BY k.id, h.name", {parameter},
                   [&](const Row& row) {
                       ClipPlace& place = places.emplace_back();
                       place.card.id = row.Number(0);
                       ReadValues(row, 1, kCardColumns, place.card);
                       ReadValues(row, 1 + static_cast<int>(std::size(kCardColumns)),
                                  kHoldingColumns, place.holding);
                   });
    return places;
}

std::vector<GapRecord> GapsOf(Connection& connection, const ClipPlace& place) {
    static const std::string kSelect =
        "SELECT " + NamesOf(kGapColumns) +
        " FROM gap WHERE card_id = $1 AND clip = $2 ORDER BY kind, what";
    std::vector<GapRecord> gaps;
    connection.Run(kSelect, {place.card.id, place.holding.name},
                   [&](const Row& row) { ReadValues(row, 0, kGapColumns, gaps.emplace_back()); });
    return gaps;
}

/// The cards with a missing segment, and of a missing file those on which the clip is whole.
std::vector<ClipPlace> PlacesWith(Connection& connection, const FoundClip& clip,
                                  const GapRecord& gap) {
    if (gap.kind == "segment") {
        return gap.identity.empty()
                   ? std::vector<ClipPlace>()
                   : PlacesOf(connection, "h.clip_id = (SELECT id FROM clip WHERE identity = $1)",
                              gap.identity);
    }
    return PlacesOf(connection, "h.clip_id = $1 AND h.file_gaps = 0", clip.id);
}

void Complete(Connection& connection, FoundClip& clip) {
    clip.places = PlacesOf(connection, "h.clip_id = $1", clip.id);
    for (const ClipPlace& place : clip.places) {
        if (place.holding.fileGaps == 0 && place.holding.segmentGaps == 0) {
            continue;
        }
        for (GapRecord& gap : GapsOf(connection, place)) {
            std::vector<ClipPlace> places = PlacesWith(connection, clip, gap);
            clip.gaps.push_back({place.card.id, std::move(gap), std::move(places)});
        }
    }
}

std::vector<FoundClip> Completed(Connection& connection, const Select& select) {
    std::vector<FoundClip> found = RunSelect(connection, select);
    for (FoundClip& clip : found) {
        Complete(connection, clip);
    }
    return found;
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
    return Completed(connection, select);
}

std::vector<FoundClip> ClipsBehind(Connection& connection, std::int64_t id, std::int64_t limit) {
    Select select(SelectClips() + "clip c");
    select.Where("c.id > " + select.Put(id));
    select.End(" ORDER BY c.id LIMIT " + select.Put(limit));
    return Completed(connection, select);
}

std::vector<FoundClip> ClipsNamed(Connection& connection, const std::string& name) {
    Select select(SelectClips() + "clip c");
    select.Where("(c.name = " + select.Put(KeptText(name)) +
                 " OR c.identity = " + select.Put(IdentityOf(TextFromBytes(name))) + ")");
    select.End(" ORDER BY c.id LIMIT 1000");
    return Completed(connection, select);
}

std::vector<FoundClip> ClipsOfCard(Connection& connection, std::int64_t card) {
    Select select(SelectClips() + "holding h JOIN clip c ON c.id = h.clip_id");
    select.Where("h.card_id = " + select.Put(card));
    select.End(" ORDER BY h.name");
    return Completed(connection, select);
}

} // namespace nqp2::catalogue
