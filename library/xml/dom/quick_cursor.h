// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"
#include "xml/dom/quick_characters.h"

#include <cstddef>
#include <cstring>
#include <string_view>

/// Names, values and texts, taken one by one from a document's bytes.
namespace nqp2::dom::quick {

/// Below the limit of libxml2, which would refuse what is beyond its own.
inline constexpr std::size_t kLongestName = 1000;

struct Name {
    std::string_view text;
    std::size_t prefixLength = 0;

    [[nodiscard]] std::string_view Prefix() const { return text.substr(0, prefixLength); }
    [[nodiscard]] std::string_view Base() const {
        return prefixLength == 0 ? text : text.substr(prefixLength + 1);
    }
    [[nodiscard]] bool IsDeclaration() const { return text == kXmlns || Prefix() == kXmlns; }
};

/// Where reading is in a text behind which a 0 stands, which is part of nothing that can be taken:
/// so no step asks for the end before it looks at a byte. A step that returns false has met what is
/// left to libxml2; it may have gone on a part of the way.
class Cursor {
public:
    Cursor(char* text, std::size_t size) : m_at(text), m_end(text + size) {}

    [[nodiscard]] const char* At() const { return m_at; }
    [[nodiscard]] bool IsAtEnd() const { return m_at == m_end; }
    void Advance(std::size_t count) { m_at += count; }

    void SkipBlanks() {
        while (Is(*m_at, kBlank)) {
            ++m_at;
        }
    }
    /// Goes over that text where it comes next, byte by byte: for the few of a mark.
    template <std::size_t Size>
    bool Take(const char (&mark)[Size]) {
        for (std::size_t i = 0; i + 1 < Size; ++i) {
            if (m_at[i] != mark[i]) {
                return false;
            }
        }
        m_at += Size - 1;
        return true;
    }
    bool Take(std::string_view text) {
        const bool isThere = text.size() <= static_cast<std::size_t>(m_end - m_at) &&
                             std::memcmp(m_at, text.data(), text.size()) == 0;
        m_at += isThere ? text.size() : 0;
        return isThere;
    }

    /// With a prefix or without, of ASCII letters.
    bool TakeName(Name& name) {
        const char* const start = m_at;
        if (!NamePart()) {
            return false;
        }
        name.prefixLength = 0;
        if (*m_at == ':') {
            name.prefixLength = static_cast<std::size_t>(m_at - start);
            ++m_at;
            if (!NamePart()) {
                return false;
            }
        }
        name.text = From(start);
        // Anything else that goes on a name is not ASCII, or a second prefix.
        return *m_at != ':' && static_cast<unsigned char>(*m_at) < 0x80 &&
               name.text.size() <= kLongestName;
    }

    /// An attribute's value, with its quotes.
    bool TakeValue(std::string_view& value) {
        const char quote = *m_at;
        if (quote != '"' && quote != '\'') {
            return false;
        }
        Rewriter out(++m_at);
        while (*m_at != quote) {
            if (Is(*m_at, kPlainValue) || *m_at == '"' || *m_at == '\'') {
                ++m_at;
            } else if (!(*m_at == '&' ? Reference(out) : Character())) {
                return false;
            }
        }
        value = out.Finish(m_at);
        ++m_at;
        return true;
    }

    /// Up to the next tag.
    bool TakeText(std::string_view& text) {
        Rewriter out(m_at);
        for (;;) {
            m_at += PlainTextLength(m_at, m_end);
            if (*m_at == '<') {
                break;
            }
            if (!TextBeyondPlain(out)) {
                return false;
            }
        }
        text = out.Finish(m_at);
        return true;
    }

    /// Up to `mark`, which is taken; there is no carriage return before it.
    template <std::size_t Size>
    bool TakeRawUpTo(const char (&mark)[Size], std::string_view& content) {
        const char* const start = m_at;
        while (!Take(mark)) {
            if (Is(*m_at, kPlainText) || *m_at == '<' || *m_at == '&' || *m_at == ']') {
                ++m_at;
            } else if (!Character()) {
                return false;
            }
        }
        content = From(start);
        content.remove_suffix(Size - 1);
        return true;
    }

private:
    [[nodiscard]] std::string_view From(const char* start) const {
        return {start, static_cast<std::size_t>(m_at - start)};
    }

    bool NamePart() {
        if (!Is(*m_at, kNameStart)) {
            return false;
        }
        do {
            ++m_at;
        } while (Is(*m_at, kNameRest));
        return true;
    }

    bool Reference(Rewriter& out) {
        static constexpr struct {
            std::string_view text;
            char ch;
        } kReferences[] = {
            {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
        const char* const start = m_at;
        for (const auto& each : kReferences) {
            if (Take(each.text)) {
                out.Replace(start, each.ch, m_at);
                return true;
            }
        }
        return false;
    }

    bool Character() {
        const std::size_t length = LengthOfCharacter(m_at);
        m_at += length;
        return length > 0;
    }

    bool TextBeyondPlain(Rewriter& out) {
        switch (*m_at) {
        case '&':
            return Reference(out);
        case ']':
            ++m_at;
            return !(m_at[0] == ']' && m_at[1] == '>');
        case '\r': {
            const char* const start = m_at;
            m_at += m_at[1] == '\n' ? 2 : 1;
            out.Replace(start, '\n', m_at);
            return true;
        }
        default:
            return Character();
        }
    }

    char* m_at;
    const char* m_end; ///< holds the 0
};

} // namespace nqp2::dom::quick
