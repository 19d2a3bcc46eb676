// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/completion/typed_word.h"

#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace nqp2::tool {
namespace {

std::string HomeFolder() {
    const char* const home = std::getenv("HOME");
    return home == nullptr ? "" : home;
}

/// How many characters at the front stand for the user's folder.
std::size_t HomeLength(std::string_view rest, bool isFirst) {
    if (isFirst && (rest == "~" || rest.starts_with("~/"))) {
        return 1;
    }
    for (const std::string_view name : {"$HOME", "${HOME}"}) {
        const bool ends = rest.size() == name.size() || name.ends_with('}') ||
                          (rest.size() > name.size() && rest[name.size()] == '/');
        if (rest.starts_with(name) && ends) {
            return name.size();
        }
    }
    return 0;
}

class Reader {
public:
    Reader(std::string_view word, Quotes quotes)
        : m_word(word), m_hasQuotes(quotes == Quotes::Kept) {}

    std::string Read() {
        while (m_at < m_word.size()) {
            if (!TakeQuoting()) {
                TakeOne();
            }
        }
        return std::move(m_meaning);
    }

private:
    bool TakeQuoting() {
        const char ch = m_word[m_at];
        if (!m_hasQuotes) {
            return false;
        }
        if (m_quote != '\'' && ch == '\\' && m_at + 1 < m_word.size()) {
            m_meaning += m_word[m_at + 1];
            m_at += 2;
            return true;
        }
        const bool isQuote = ch == '\'' || ch == '"';
        if (!isQuote || (m_quote != '\0' && m_quote != ch)) {
            return false;
        }
        m_quote = m_quote == ch ? '\0' : ch;
        ++m_at;
        return true;
    }
    void TakeOne() {
        const std::size_t home = m_quote == '\'' ? 0 : HomeLength(m_word.substr(m_at), m_at == 0);
        if (home > 0) {
            m_meaning += HomeFolder();
            m_at += home;
        } else {
            m_meaning += m_word[m_at++];
        }
    }

    std::string_view m_word;
    bool m_hasQuotes;
    std::size_t m_at = 0;
    char m_quote = '\0'; ///< that is open
    std::string m_meaning;
};

} // namespace

std::string MeaningOfTyped(const std::string& word, Quotes quotes) {
    return Reader(word, quotes).Read();
}

} // namespace nqp2::tool
