// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/xml_document.h"

#include "console/utf8_text.h"

#include <algorithm>

namespace nqp2::timeline {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// What stands for a character; itself when it may stand as it is.
std::string_view Escaped(std::string_view character) {
    constexpr std::string_view kNoCharacters[] = {"\xEF\xBF\xBE", "\xEF\xBF\xBF"};
    if (character.size() > 1) {
        return std::find(std::begin(kNoCharacters), std::end(kNoCharacters), character) ==
                       std::end(kNoCharacters)
                   ? character
                   : kReplacement;
    }
    switch (character.front()) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\r':
        return "&#13;";
    case '\n':
    case '\t':
        return character;
    default:
        return static_cast<unsigned char>(character.front()) < ' ' ? kReplacement : character;
    }
}

} // namespace

void XmlDocument::OpenWith(std::string_view name, std::string_view attributes) {
    Indent();
    m_out.Put('<', name, attributes, ">\n");
    ++m_depth;
}

void XmlDocument::Close(std::string_view name) {
    --m_depth;
    Indent();
    m_out.Put("</", name, ">\n");
}

void XmlDocument::Empty(std::string_view name, std::string_view attributes) {
    Indent();
    m_out.Put('<', name, attributes, "/>\n");
}

void XmlDocument::Text(std::string_view name, std::string_view text) {
    Indent();
    m_out.Put('<', name, '>');
    PutEscaped(text);
    m_out.Put("</", name, ">\n");
}

void XmlDocument::Number(std::string_view name, std::int64_t number) {
    Text(name, std::to_string(number));
}

void XmlDocument::Indent() {
    for (std::size_t i = 0; i < m_depth; ++i) {
        m_out.Put(' ');
    }
}

void XmlDocument::PutEscaped(std::string_view text) {
    while (!text.empty()) {
        const tool::Utf8Character next = tool::FirstUtf8(text);
        m_out.Put(next.isWhole ? Escaped(text.substr(0, next.length)) : kReplacement);
        text.remove_prefix(next.length);
    }
}

} // namespace nqp2::timeline
