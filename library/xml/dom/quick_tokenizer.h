// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "xml/dom/node.h"
#include "xml/dom/quick_cursor.h"
#include "xml/dom/quick_namespaces.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

/// Takes plain documents apart, what cameras write, at a fraction of libxml2's cost: for
/// quick_parser.h, which builds a tree, and field_reader.h, which needs none.
///
/// It takes: UTF-8, with or without byte-order mark, of a size that its callers bound (below the
/// 10 MB at which limits of libxml2 begin); an XML declaration of version 1.0; elements with ASCII
/// names, at most 200 within each other and with at most 24 attributes; namespaces; text, comments
/// and CDATA sections; the five references that need no declaration ("&amp;" and its like).
///
/// It leaves to libxml2: document types, processing instructions, numeric references, other
/// encodings, control characters in values, the prefix "xml", names that are not ASCII, whatever is
/// larger or deeper, and every document that is not well-formed: it refuses none by itself, so that
/// each refusal, with its code, line and text, is libxml2's. What it takes is what libxml2 would
/// take, and comes to the same; the fuzz targets quick_parser and field_reader compare them.
///
/// Its parts, from below:
/// - quick_characters.h: what a byte may be part of, and decoding in place;
/// - quick_cursor.h: one name, value or text;
/// - quick_namespaces.h: what prefixes mean;
/// - this file: the order in which all that may come.
namespace nqp2::dom::quick {

// Below the limits of libxml2, which would refuse what is beyond its own.
inline constexpr std::size_t kMaxAttributes = 24;
inline constexpr int kMaxDepth = 200;

/// Takes one document apart, in a copy of it behind which a 0 stands, and tells a sink what it
/// meets. Each step returns false at what is left to libxml2. The sink has:
/// - Declaration(text), the XML declaration's;
/// - bool Open(name, uri, attributes), Close(), std::string_view OpenName(), of the element that
///   was opened last and is not closed; their texts are in the copy, in document order;
/// - bool Characters(type, text) within the root, bool Comment(text) anywhere;
/// - std::size_t Leap(at, depth): asked within the root before each step; 0 to have it done. A sink
///   that knows what the next steps would come to has told itself of them, and returns their
///   number of bytes, with the depth behind them: see stretch_memory.h.
/// What returns false there ends the reading.
template <class Sink>
class Tokenizer {
public:
    Tokenizer(Sink& sink, char* text, std::size_t size) : m_sink(sink), m_in(text, size) {}

    /// Whether it was a document, and one that is taken.
    bool Document() {
        m_in.Take("\xEF\xBB\xBF"); // the byte-order mark
        if (*m_in.At() != '<' || !Declaration()) {
            return false;
        }
        while (m_depth > 0 || !m_in.IsAtEnd()) {
            const std::size_t known = m_depth > 0 ? m_sink.Leap(m_in.At(), m_depth) : 0;
            m_in.Advance(known);
            if (known == 0 && !Step()) {
                return false;
            }
            if (m_depth == 0) {
                m_in.SkipBlanks();
            }
        }
        return m_hasRoot;
    }

private:
    bool Step() {
        if (*m_in.At() != '<') {
            return m_depth > 0 && Text();
        }
        switch (m_in.At()[1]) {
        case '/':
            return m_depth > 0 && EndTag();
        case '!':
            return m_in.Take("<!--") ? Comment()
                                     : m_depth > 0 && m_in.Take("<![CDATA[") && CDataSection();
        default:
            return StartTag();
        }
    }

    bool Declaration() {
        if (!m_in.Take("<?xml ")) {
            m_in.SkipBlanks();
            return true;
        }
        std::array<char, 64> data{};
        std::size_t length = 0;
        const auto keep = [&](std::string_view part) {
            length += part.copy(data.data() + length, data.size() - length);
        };
        if (!m_in.Take("version=\"1.0\"")) {
            return false;
        }
        keep("version=\"1.0\"");
        if (m_in.Take(" encoding=\"UTF-8\"") || m_in.Take(" encoding=\"utf-8\"")) {
            keep(" encoding=\"UTF-8\"");
        }
        for (const std::string_view standalone : {" standalone=\"no\"", " standalone=\"yes\""}) {
            if (m_in.Take(standalone)) {
                keep(standalone);
                break;
            }
        }
        m_in.SkipBlanks();
        if (!m_in.Take("?>")) {
            return false;
        }
        m_sink.Declaration({data.data(), length});
        m_in.SkipBlanks();
        return true;
    }

    bool Text() {
        std::string_view text;
        return m_in.TakeText(text) && m_sink.Characters(NodeType::Text, text);
    }

    bool Comment() {
        std::string_view content;
        return m_in.TakeRawUpTo("--", content) && m_in.Take(">") && m_sink.Comment(content);
    }

    bool CDataSection() {
        std::string_view content;
        // libxml2 leaves empty ones out.
        return m_in.TakeRawUpTo("]]>", content) && !content.empty() &&
               m_sink.Characters(NodeType::CData, content);
    }

    bool StartTag() {
        m_in.Advance(1);
        Name name;
        if ((m_depth == 0 && m_hasRoot) || m_depth == kMaxDepth || !m_in.TakeName(name)) {
            return false;
        }
        m_hasRoot = true;
        ++m_depth;
        std::size_t count = 0;
        if (!TakeAttributes(count)) {
            return false;
        }
        const auto attributes = std::span(m_attributes).first(count);
        std::string_view uri;
        if (!m_namespaces.Declare(attributes, m_depth) || !m_namespaces.UriOf(name.Prefix(), uri) ||
            !m_namespaces.Resolve(attributes) || !m_sink.Open(name, uri, attributes)) {
            return false;
        }
        if (m_in.Take("/>")) {
            Leave();
            return true;
        }
        return m_in.Take(">");
    }

    bool TakeAttributes(std::size_t& count) {
        for (;;) {
            const bool isApart = Is(*m_in.At(), kBlank);
            m_in.SkipBlanks();
            if (*m_in.At() == '>' || *m_in.At() == '/') {
                return true;
            }
            if (!isApart || count == kMaxAttributes || !TakeAttribute(m_attributes[count])) {
                return false;
            }
            ++count;
        }
    }

    bool TakeAttribute(Attribute& attribute) {
        if (!m_in.TakeName(attribute.name)) {
            return false;
        }
        m_in.SkipBlanks();
        if (!m_in.Take("=")) {
            return false;
        }
        m_in.SkipBlanks();
        return m_in.TakeValue(attribute.value);
    }

    bool EndTag() {
        m_in.Advance(2);
        if (!m_in.Take(m_sink.OpenName())) {
            return false;
        }
        m_in.SkipBlanks();
        Leave();
        return m_in.Take(">");
    }

    void Leave() {
        m_namespaces.Leave(m_depth);
        --m_depth;
        m_sink.Close();
    }

    Sink& m_sink;
    Cursor m_in;
    int m_depth = 0;
    bool m_hasRoot = false;
    Namespaces m_namespaces;
    std::array<Attribute, kMaxAttributes> m_attributes;
};

} // namespace nqp2::dom::quick
