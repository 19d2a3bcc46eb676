// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/path_pattern.h"

#include "platform/unicode.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace nqp2::mhl {
namespace {

constexpr std::string_view kAnyFolders = "**";
constexpr std::string_view kAnyName = "*";

struct CharacterRange {
    char32_t first, last;
};
struct CharacterClass {
    std::string_view name;
    CharacterRange ranges[4]; ///< of ASCII; those that are not used are empty
};
constexpr CharacterRange kNoRange{1, 0};
constexpr CharacterClass kClasses[] = {
    {"alnum", {{'0', '9'}, {'A', 'Z'}, {'a', 'z'}, kNoRange}},
    {"alpha", {{'A', 'Z'}, {'a', 'z'}, kNoRange, kNoRange}},
    {"blank", {{' ', ' '}, {'\t', '\t'}, kNoRange, kNoRange}},
    {"cntrl", {{0, 0x1F}, {0x7F, 0x7F}, kNoRange, kNoRange}},
    {"digit", {{'0', '9'}, kNoRange, kNoRange, kNoRange}},
    {"graph", {{'!', '~'}, kNoRange, kNoRange, kNoRange}},
    {"lower", {{'a', 'z'}, kNoRange, kNoRange, kNoRange}},
    {"print", {{' ', '~'}, kNoRange, kNoRange, kNoRange}},
    {"punct", {{'!', '/'}, {':', '@'}, {'[', '`'}, {'{', '~'}}},
    {"space", {{' ', ' '}, {'\t', '\r'}, kNoRange, kNoRange}},
    {"upper", {{'A', 'Z'}, kNoRange, kNoRange, kNoRange}},
    {"xdigit", {{'0', '9'}, {'A', 'F'}, {'a', 'f'}, kNoRange}},
};

bool IsIn(const CharacterRange& range, char32_t code) {
    return code >= range.first && code <= range.last;
}

/// What a text consists of, one by one; a byte that is no UTF-8 counts as a character of its own.
class Characters {
public:
    explicit Characters(std::string_view text) : m_text(text) {}

    [[nodiscard]] bool AtEnd() const { return m_text.empty(); }
    [[nodiscard]] std::string_view Rest() const { return m_text; }
    /// Takes a text away when it is what comes next.
    bool Skip(std::string_view text) {
        const bool isNext = m_text.starts_with(text);
        m_text.remove_prefix(isNext ? text.size() : 0);
        return isNext;
    }
    /// Not at the end.
    char32_t Next() {
        constexpr char32_t kStrayByte = 0x110000; // beyond all characters
        platform::Utf8Character first = platform::FirstCharacter(m_text);
        if (first.length == 0) {
            first = {kStrayByte + static_cast<unsigned char>(m_text.front()), 1};
        }
        m_text.remove_prefix(first.length);
        return first.code;
    }
    /// One of a set, which may be escaped.
    std::optional<char32_t> NextPlain() {
        Skip("\\");
        return AtEnd() ? std::nullopt : std::optional(Next());
    }

private:
    std::string_view m_text;
};

/// "[:alpha:]" in a set; std::nullopt when there is no such class.
std::optional<bool> FitsClass(Characters& pattern, char32_t code) {
    const std::string_view name = pattern.Rest().substr(0, pattern.Rest().find(":]"));
    const auto* const found =
        std::find_if(std::begin(kClasses), std::end(kClasses),
                     [&](const CharacterClass& each) { return each.name == name; });
    if (found == std::end(kClasses)) {
        return std::nullopt;
    }
    pattern.Skip(name);
    pattern.Skip(":]");
    return std::any_of(std::begin(found->ranges), std::end(found->ranges),
                       [&](const CharacterRange& range) { return IsIn(range, code); });
}

/// One character or range of a set.
std::optional<bool> FitsRange(Characters& pattern, char32_t code) {
    const std::optional<char32_t> first = pattern.NextPlain();
    std::optional<char32_t> last = first;
    if (pattern.Rest().starts_with('-') && !pattern.Rest().starts_with("-]")) {
        pattern.Skip("-");
        last = pattern.NextPlain();
    }
    return first && last ? std::optional(IsIn({*first, *last}, code)) : std::nullopt;
}

/// The set behind a "["; std::nullopt when it does not end, which fits nothing.
std::optional<bool> FitsSet(Characters& pattern, char32_t code) {
    const bool isNegated = pattern.Skip("!") || pattern.Skip("^");
    bool fits = false;
    for (bool isFirst = true; isFirst || !pattern.Skip("]"); isFirst = false) {
        if (pattern.AtEnd()) {
            return std::nullopt;
        }
        const std::optional<bool> part =
            pattern.Skip("[:") ? FitsClass(pattern, code) : FitsRange(pattern, code);
        if (!part) {
            return std::nullopt;
        }
        fits = fits || *part;
    }
    return fits != isNegated;
}

/// Whether a pattern that begins with no star fits one character; takes its part away.
bool FitsOne(Characters& pattern, char32_t code) {
    if (pattern.AtEnd()) {
        return false;
    }
    if (pattern.Skip("?")) {
        return true;
    }
    if (pattern.Skip("[")) {
        return FitsSet(pattern, code).value_or(false);
    }
    return pattern.NextPlain() == code;
}

/// What follows the last star is tried at one place after the other: earlier stars need not be
/// tried again.
bool NameFits(std::string_view text, std::string_view name) {
    Characters pattern(text);
    Characters rest(name);
    std::optional<Characters> afterStar;
    Characters retry(name);
    while (!rest.AtEnd()) {
        if (pattern.Skip(kAnyName)) {
            afterStar = pattern;
            retry = rest;
            continue;
        }
        if (FitsOne(pattern, rest.Next())) {
            continue;
        }
        if (!afterStar) {
            return false;
        }
        pattern = *afterStar;
        retry.Next();
        rest = retry;
    }
    while (pattern.Skip(kAnyName)) {
    }
    return pattern.AtEnd();
}

} // namespace

std::vector<std::string_view> PartsOf(std::string_view path) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t slash = path.find('/');
        parts.push_back(path.substr(0, slash));
        if (slash == std::string_view::npos) {
            return parts;
        }
        path.remove_prefix(slash + 1);
    }
}

PathPattern::PathPattern(std::string_view text) {
    const bool isAnchored = text.find('/') != std::string_view::npos;
    text.remove_prefix(text.starts_with('/') ? 1 : 0);
    if (!isAnchored) {
        m_parts.emplace_back(kAnyFolders);
    }
    for (const std::string_view part : PartsOf(text)) {
        m_parts.emplace_back(part);
    }
    // At the end it is all that is in a folder, not the folder.
    if (m_parts.back() == kAnyFolders) {
        m_parts.emplace_back(kAnyName);
    }
}

/// As with the stars of a name.
bool PathPattern::Fits(const std::vector<std::string_view>& path) const {
    std::size_t part = 0;
    std::size_t place = 0;
    std::optional<std::size_t> afterStar;
    std::size_t retry = 0;
    while (place < path.size()) {
        if (part < m_parts.size() && m_parts[part] == kAnyFolders) {
            afterStar = ++part;
            retry = place;
        } else if (part < m_parts.size() && NameFits(m_parts[part], path[place])) {
            ++part;
            ++place;
        } else if (afterStar) {
            part = *afterStar;
            place = ++retry;
        } else {
            return false;
        }
    }
    return part == m_parts.size();
}

} // namespace nqp2::mhl
