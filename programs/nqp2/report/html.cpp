// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/report/html.h"

#include "nqp2/display_text.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace nqp2::report {
namespace {

/// Where to cut a text so that no character of UTF-8 is cut in two.
std::string_view Beginning(std::string_view text) {
    constexpr unsigned kMask = 0xC0;
    constexpr unsigned kInside = 0x80;
    std::size_t end = kLongestText;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & kMask) == kInside) {
        --end;
    }
    return text.substr(0, end);
}

std::string_view Entity(char ch) {
    switch (ch) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\'':
        return "&#39;";
    default:
        return {};
    }
}

void AppendEscaped(std::string_view text, std::string& markup) {
    for (const char ch : text) {
        const std::string_view entity = Entity(ch);
        if (entity.empty()) {
            markup += ch;
        } else {
            markup += entity;
        }
    }
}

} // namespace

std::string Escaped(std::string_view text) {
    std::string markup;
    const bool isLong = text.size() > kLongestText;
    AppendEscaped(tool::Printable(isLong ? Beginning(text) : text, tool::LineBreaks::Keep), markup);
    return isLong ? markup + "\xE2\x80\xA6" : markup;
}

void Html::Fill() {
    if (m_isOpen) {
        m_page += '>';
        m_isOpen = false;
    }
}

Html& Html::Open(Own tag) {
    Fill();
    m_page += '<';
    m_page += tag.Text();
    m_isOpen = true;
    return *this;
}

Html& Html::With(Own name, Own value) {
    return WithText(name, value.Text());
}

Html& Html::WithText(Own name, std::string_view value) {
    With(name);
    m_page += "=\"";
    m_page += Escaped(value);
    m_page += '"';
    return *this;
}

Html& Html::WithNumber(Own name, std::int64_t value) {
    return WithText(name, fmt::format_int(value).c_str());
}

Html& Html::With(Own name) {
    m_page += ' ';
    m_page += name.Text();
    return *this;
}

Html& Html::WithJpeg(Own name, std::string_view jpeg) {
    With(name);
    m_page += "=\"data:image/jpeg;base64,";
    m_page += Base64(jpeg);
    m_page += '"';
    return *this;
}

Html& Html::Close(Own tag) {
    Fill();
    m_page += "</";
    m_page += tag.Text();
    m_page += '>';
    return *this;
}

Html& Html::Text(Own text) {
    Fill();
    m_page += text.Text();
    return *this;
}

Html& Html::Shown(std::string_view text) {
    Fill();
    m_page += Escaped(text);
    return *this;
}

Html& Html::Foreign(std::string_view text) {
    return Open("bdi").Shown(text).Close("bdi");
}

Html& Html::Foreign(const CString& text) {
    return Foreign(std::string_view(BytesFromText(text)));
}

std::string Html::Finish() {
    Fill();
    return std::move(m_page);
}

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr unsigned kMask = 0x3F;
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        unsigned group = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            group = group << 8U | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text += i <= count ? kDigits[group >> (18 - 6 * i) & kMask] : '=';
        }
    }
    return text;
}

} // namespace nqp2::report
