// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/xml_text.h"

#include "platform/unicode.h"

#include <algorithm>
#include <iterator>

namespace nqp2::mhl {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct Escape {
    char character;
    std::string_view text;
};
constexpr Escape kEscapes[] = {
    {'&', "&amp;"}, {'<', "&lt;"},   {'>', "&gt;"},   {'"', "&quot;"},
    {'\t', "&#9;"}, {'\n', "&#10;"}, {'\r', "&#13;"},
};
constexpr std::string_view kSpecial = "&<>\"\t\n\r";

bool IsXmlCharacter(char32_t code) {
    constexpr char32_t kFirstPrintable = 0x20;
    constexpr char32_t kNoCharacter = 0xFFFE; // and 0xFFFF
    return code >= kFirstPrintable ? (code | 1U) != (kNoCharacter | 1U)
                                   : code == '\t' || code == '\n' || code == '\r';
}

/// Printable ASCII, which most texts are made of.
std::size_t PlainLength(std::string_view text) {
    const auto* const end = std::find_if(text.begin(), text.end(), [](char ch) {
        constexpr unsigned char kDelete = 0x7F;
        const auto byte = static_cast<unsigned char>(ch);
        return byte < ' ' || byte >= kDelete || kSpecial.find(ch) != std::string_view::npos;
    });
    return static_cast<std::size_t>(end - text.begin());
}

} // namespace

XmlFault XmlTextFault(std::string_view text) {
    while (!text.empty()) {
        const platform::Utf8Character first = platform::FirstCharacter(text);
        if (first.length == 0) {
            return XmlFault::NotUtf8;
        }
        if (!IsXmlCharacter(first.code)) {
            return XmlFault::Character;
        }
        text.remove_prefix(first.length);
    }
    return XmlFault::None;
}

void AppendXmlText(std::string_view text, std::string& xml) {
    for (;;) {
        const std::size_t plain = PlainLength(text);
        xml.append(text.substr(0, plain));
        text.remove_prefix(plain);
        if (text.empty()) {
            return;
        }
        const platform::Utf8Character first = platform::FirstCharacter(text);
        const std::size_t length = std::max<std::size_t>(first.length, 1);
        const auto* const escape =
            std::find_if(std::begin(kEscapes), std::end(kEscapes),
                         [&](const Escape& each) { return each.character == text.front(); });
        if (escape != std::end(kEscapes)) {
            xml.append(escape->text);
        } else if (first.length == 0 || !IsXmlCharacter(first.code)) {
            xml.append(kReplacement);
        } else {
            xml.append(text.substr(0, length));
        }
        text.remove_prefix(length);
    }
}

} // namespace nqp2::mhl
