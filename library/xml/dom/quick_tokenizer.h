// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"
#include "xml/dom/quick_characters.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

/// Takes plain documents apart, for quick_parser.h and field_reader.h.
namespace nqp2::dom::quick {

// Below the limits of libxml2, which would refuse what is beyond its own.
inline constexpr std::size_t kLongestName = 1000;
inline constexpr std::size_t kMaxAttributes = 24;
inline constexpr std::size_t kMaxBindings = 24;
inline constexpr int kMaxDepth = 200;

struct Name {
    std::string_view text;
    std::size_t prefixLength = 0;

    [[nodiscard]] std::string_view Prefix() const { return text.substr(0, prefixLength); }
    [[nodiscard]] std::string_view Base() const {
        return prefixLength == 0 ? text : text.substr(prefixLength + 1);
    }
    [[nodiscard]] bool IsDeclaration() const { return text == kXmlns || Prefix() == kXmlns; }
};

struct Attribute {
    Name name;
    std::string_view value;
    std::string_view uri;
};

/// Whether a namespace of that name follows no rule of its own.
inline bool IsUsualUri(std::string_view uri) {
    return !uri.empty() && uri.size() <= kLongestName &&
           uri != "http://www.w3.org/XML/1998/namespace" && uri != "http://www.w3.org/2000/xmlns/";
}

/// A prefix as an element that is open binds it; "" for the default namespace.
struct Binding {
    std::string_view prefix;
    std::string_view uri;
    int depth = 0;
};

/// Takes one document apart, in a copy of it behind which a 0 stands, and tells a sink what it
/// meets. Each step returns false at what is left to libxml2. The sink has:
/// - Declaration(text), the XML declaration's;
/// - bool Open(name, uri, attributes), Close(), std::string_view OpenName(), of the element that
///   was opened last and is not closed; their texts are in the copy, in document order;
/// - bool Characters(type, text) within the root, bool Comment(text) anywhere;
/// - std::size_t Leap(at, depth): asked within the root before each step; 0 to have it done. A sink
///   that knows what the next steps would come to has told itself of them, and returns their
///   number of bytes, with the depth behind them: see field_memory.h.
/// What returns false there ends the reading.
template <class Sink>
class Tokenizer {
public:
    Tokenizer(Sink& sink, char* text, std::size_t size)
        : m_sink(sink), m_at(text), m_end(text + size) {}

    /// Whether it was a document, and one that is taken.
    bool Document() {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        Take(kByteOrderMark);
        if (*m_at != '<' || !Declaration()) {
            return false;
        }
        while (m_depth > 0 || m_at != m_end) {
            const std::size_t known = m_depth > 0 ? m_sink.Leap(m_at, m_depth) : 0;
            m_at += known;
            if (known == 0 && !Step()) {
                return false;
            }
            if (m_depth == 0) {
                SkipBlanks();
            }
        }
        return m_hasRoot;
    }

private:
    [[nodiscard]] std::string_view Rest() const {
        return {m_at, static_cast<std::size_t>(m_end - m_at)};
    }
    bool Take(std::string_view text) {
        const bool isThere = Rest().starts_with(text);
        m_at += isThere ? text.size() : 0;
        return isThere;
    }
    void SkipBlanks() {
        while (Is(*m_at, kBlank)) {
            ++m_at;
        }
    }

    bool Step() {
        if (*m_at != '<') {
            return m_depth > 0 && Text();
        }
        switch (m_at[1]) {
        case '/':
            return m_depth > 0 && EndTag();
        case '!':
            return Take("<!--") ? Comment() : m_depth > 0 && Take("<![CDATA[") && CDataSection();
        default:
            return StartTag();
        }
    }

    bool Declaration() {
        if (!Take("<?xml ")) {
            SkipBlanks();
            return true;
        }
        std::array<char, 64> data{};
        std::size_t length = 0;
        const auto keep = [&](std::string_view part) {
            length += part.copy(data.data() + length, data.size() - length);
        };
        if (!Take("version=\"1.0\"")) {
            return false;
        }
        keep("version=\"1.0\"");
        if (Take(" encoding=\"UTF-8\"") || Take(" encoding=\"utf-8\"")) {
            keep(" encoding=\"UTF-8\"");
        }
        for (const std::string_view standalone : {" standalone=\"no\"", " standalone=\"yes\""}) {
            if (Take(standalone)) {
                keep(standalone);
                break;
            }
        }
        SkipBlanks();
        if (!Take("?>")) {
            return false;
        }
        m_sink.Declaration({data.data(), length});
        SkipBlanks();
        return true;
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
        name.text = {start, static_cast<std::size_t>(m_at - start)};
        // Anything else that goes on a name is not ASCII, or a second prefix.
        return *m_at != ':' && static_cast<unsigned char>(*m_at) < 0x80 &&
               name.text.size() <= kLongestName;
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

    bool Value(std::string_view& value) {
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

    bool Text() {
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
        return m_sink.Characters(NodeType::Text, out.Finish(m_at));
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

    /// Up to `end`, which is taken; there is no carriage return before it.
    bool RawUpTo(std::string_view end, std::string_view& content) {
        const char* const start = m_at;
        while (*m_at != end[0] || !Rest().starts_with(end)) {
            if (Is(*m_at, kPlainText) || *m_at == '<' || *m_at == '&' || *m_at == ']') {
                ++m_at;
            } else if (!Character()) {
                return false;
            }
        }
        content = {start, static_cast<std::size_t>(m_at - start)};
        m_at += end.size();
        return true;
    }

    bool Comment() {
        std::string_view content;
        if (!RawUpTo("--", content) || !Take(">")) {
            return false;
        }
        return m_sink.Comment(content);
    }

    bool CDataSection() {
        std::string_view content;
        // libxml2 leaves empty ones out.
        if (!RawUpTo("]]>", content) || content.empty()) {
            return false;
        }
        return m_sink.Characters(NodeType::CData, content);
    }

    bool StartTag() {
        Name name;
        ++m_at;
        if ((m_depth == 0 && m_hasRoot) || m_depth == kMaxDepth || !TakeName(name)) {
            return false;
        }
        m_hasRoot = true;
        ++m_depth;
        std::size_t count = 0;
        std::string_view uri;
        if (!TakeAttributes(count) || !Declare(count) || !UriOf(name.Prefix(), uri) ||
            !Resolve(count)) {
            return false;
        }
        if (!m_sink.Open(name, uri, std::span(m_attributes).first(count))) {
            return false;
        }
        if (Take("/>")) {
            Leave();
            return true;
        }
        return Take(">");
    }

    bool TakeAttributes(std::size_t& count) {
        for (;;) {
            const bool isApart = Is(*m_at, kBlank);
            SkipBlanks();
            if (*m_at == '>' || *m_at == '/') {
                return true;
            }
            if (!isApart || count == kMaxAttributes) {
                return false;
            }
            Attribute& attribute = m_attributes[count++];
            if (!TakeName(attribute.name)) {
                return false;
            }
            SkipBlanks();
            if (!Take("=")) {
                return false;
            }
            SkipBlanks();
            if (!Value(attribute.value)) {
                return false;
            }
        }
    }

    /// Binds the prefixes that the attributes declare.
    bool Declare(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const Attribute& each = m_attributes[i];
            if (!each.name.IsDeclaration()) {
                continue;
            }
            const std::string_view prefix =
                each.name.prefixLength == 0 ? std::string_view() : each.name.Base();
            if (m_bound == kMaxBindings || prefix.starts_with("xml") || !IsUsualUri(each.value)) {
                return false;
            }
            m_bindings[m_bound++] = {prefix, each.value, m_depth};
        }
        return true;
    }

    bool UriOf(std::string_view prefix, std::string_view& uri) const {
        for (std::size_t i = m_bound; i > 0; --i) {
            if (m_bindings[i - 1].prefix == prefix) {
                uri = m_bindings[i - 1].uri;
                return true;
            }
        }
        return prefix.empty();
    }

    /// Looks for the namespaces of the attributes; no two may have one name.
    bool Resolve(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            Attribute& each = m_attributes[i];
            each.uri = {};
            if (each.name.prefixLength > 0 && !each.name.IsDeclaration() &&
                !UriOf(each.name.Prefix(), each.uri)) {
                return false;
            }
            for (std::size_t k = 0; k < i; ++k) {
                const Attribute& other = m_attributes[k];
                if (other.name.text == each.name.text ||
                    (!each.uri.empty() && other.uri == each.uri &&
                     other.name.Base() == each.name.Base())) {
                    return false;
                }
            }
        }
        return true;
    }

    bool EndTag() {
        m_at += 2;
        if (!Take(m_sink.OpenName())) {
            return false;
        }
        SkipBlanks();
        Leave();
        return Take(">");
    }

    void Leave() {
        while (m_bound > 0 && m_bindings[m_bound - 1].depth == m_depth) {
            --m_bound;
        }
        --m_depth;
        m_sink.Close();
    }

    Sink& m_sink;
    char* m_at;
    const char* m_end; ///< holds a 0
    int m_depth = 0;
    bool m_hasRoot = false;
    std::size_t m_bound = 0;
    std::array<Binding, kMaxBindings> m_bindings;
    std::array<Attribute, kMaxAttributes> m_attributes;
};

} // namespace nqp2::dom::quick
