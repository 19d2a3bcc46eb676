// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "xml/dom/schema_cost.h"

#include "xml/dom/libxml.h"

#include <libxml/xmlregexp.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <string_view>

namespace nqp2::dom {
namespace {

constexpr double kNoEnd = std::numeric_limits<double>::infinity();
// Far above any pattern that is written by hand; libxml2 goes as deep as the brackets do.
constexpr std::size_t kLongestPattern = 200; ///< bytes
constexpr int kMostBrackets = 32;            ///< brackets in brackets

/// Ways through a part of a pattern: the value's length to the power of `loops`, times e to the
/// power of `log`.
struct Ways {
    double loops = 0;
    double log = 0;
    bool isNested = false; ///< a loop in a loop, which may offer far more

    void Add(const Ways& other) {
        loops += other.loops;
        log += other.log;
        isNested = isNested || other.isNested;
    }
};

/// How often a part may come in a row.
struct Count {
    double least = 1;
    double most = 1;
};

Ways Repeated(const Ways& once, const Count& count) {
    if (count.most < kNoEnd) {
        const double choices = std::max(count.most - count.least + 1, 1.0);
        return {once.loops * count.most, once.log * count.most + std::log(choices), once.isNested};
    }
    const bool holdsOneLoop = once.loops == 1 && once.log == 0;
    return once.loops + once.log > 0 && !holdsOneLoop ? Ways{kNoEnd, 0, true}
                                                      : Ways{once.loops + 1, 0, holdsOneLoop};
}

/// Reads what decides the number of ways: groups, branches and counts. Whether it is a pattern at
/// all is for the library to say.
class PatternReader {
public:
    explicit PatternReader(std::string_view pattern) : m_left(pattern) {}

    /// Ends at brackets that are too deep.
    Ways Read() {
        Ways ways;
        double branches = 1;
        while (!m_left.empty() && m_left.front() != ')') {
            if (Take('|')) {
                ++branches;
            } else {
                const Ways atom = ReadAtom();
                ways.Add(Repeated(atom, ReadCount()));
            }
        }
        ways.log += std::log(branches);
        return ways;
    }

private:
    bool Take(char ch) {
        const bool here = !m_left.empty() && m_left.front() == ch;
        m_left.remove_prefix(here ? 1 : 0);
        return here;
    }
    void Skip(std::size_t count) { m_left.remove_prefix(std::min(count, m_left.size())); }

    Ways ReadAtom() {
        Ways ways;
        if (Take('(')) {
            if (++m_depth > kMostBrackets) {
                m_left = {};
                return {kNoEnd, 0, true};
            }
            ways = Read();
            --m_depth;
            Take(')');
        } else if (Take('[')) {
            SkipClass();
        } else if (Take('\\')) {
            const bool isProperty = m_left.starts_with("p{") || m_left.starts_with("P{");
            Skip(isProperty ? m_left.find('}') : 0);
            Skip(1);
        } else {
            Skip(1);
        }
        return ways;
    }
    /// Classes may hold others.
    void SkipClass() {
        for (int open = 1; open > 0 && !m_left.empty();) {
            if (Take('\\')) {
                Skip(1);
            } else {
                open += m_left.front() == '[' ? 1 : m_left.front() == ']' ? -1 : 0;
                Skip(1);
            }
        }
    }
    Count ReadCount() {
        if (Take('?')) {
            return {0, 1};
        }
        if (Take('*') || Take('+')) {
            return {0, kNoEnd};
        }
        if (!Take('{')) {
            return {};
        }
        Count count;
        count.least = ReadNumber(0);
        count.most = Take(',') ? ReadNumber(kNoEnd) : count.least;
        Take('}');
        return count;
    }
    double ReadNumber(double otherwise) {
        unsigned number = 0;
        const char* const end = m_left.data() + m_left.size();
        const auto [stopped, error] = std::from_chars(m_left.data(), end, number);
        Skip(static_cast<std::size_t>(stopped - m_left.data()));
        return error == std::errc() ? number : otherwise;
    }

    std::string_view m_left;
    int m_depth = 0;
};

struct FreeRegexp {
    void operator()(xmlRegexpPtr regexp) const { xmlRegFreeRegexp(regexp); }
};

/// Whether loops in loops always know which of them goes on. What libxml2 says of patterns with
/// counts does not hold.
bool OffersOneWay(const std::string& pattern) {
    const std::unique_ptr<xmlRegexp, FreeRegexp> regexp(xmlRegexpCompile(Xml(pattern)));
    return regexp != nullptr && pattern.find_first_of("{?") == std::string::npos &&
           xmlRegexpIsDeterminist(regexp.get()) == 1;
}

} // namespace

bool IsAffordablePattern(const std::string& pattern, const ValueSizes& values) {
    constexpr double kMostSteps = 1e9;
    if (pattern.size() > kLongestPattern) {
        return false;
    }
    const Ways ways = PatternReader(pattern).Read();
    // The ways back into the last loop end at once.
    const double lengths = std::max(ways.loops - 1, 0.0) * std::log(values.longest + 2);
    const double steps = std::log(std::max(values.all, 1.0)) + ways.log + lengths;
    return steps <= std::log(kMostSteps) && ways.loops < kNoEnd &&
           (!ways.isNested || OffersOneWay(pattern));
}

} // namespace nqp2::dom
