// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "page/html.h"

#include "console/display_text.h"
#include "console/output_text.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace nqp2::page {
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

constexpr std::string_view kMarkup = "&<>\"'";
constexpr std::string_view kEntities[] = {"&amp;", "&lt;", "&gt;", "&quot;", "&#39;"};

void AppendEntities(std::string_view text, std::string& markup) {
    for (;;) {
        const std::size_t plain = std::min(text.find_first_of(kMarkup), text.size());
        markup += text.substr(0, plain);
        if (plain == text.size()) {
            return;
        }
        markup += kEntities[kMarkup.find(text[plain])];
        text.remove_prefix(plain + 1);
    }
}

/// Most texts are printable ASCII, which takes no copy.
void AppendEscaped(std::string_view text, std::string& markup) {
    const bool isLong = text.size() > kLongestText;
    const std::string_view shown = isLong ? Beginning(text) : text;
    if (tool::PrintableLength(shown) == shown.size()) {
        AppendEntities(shown, markup);
    } else {
        AppendEntities(tool::Printable(shown, tool::LineBreaks::Keep), markup);
    }
    markup += isLong ? "\xE2\x80\xA6" : "";
}

/// Bytes in base 64.
void AppendBase64(std::string_view bytes, std::string& text) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr unsigned kMask = 0x3F;
    const std::size_t start = text.size();
    text.resize(start + (bytes.size() + 2) / 3 * 4, '=');
    char* to = text.data() + start;
    const auto put = [&](std::string_view group) {
        unsigned bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8U | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (std::size_t i = 0; i <= group.size(); ++i) {
            to[i] = kDigits[bits >> (18 - 6 * i) & kMask];
        }
        to += 4;
    };
    std::size_t at = 0;
    for (; at + 3 <= bytes.size(); at += 3) {
        put({bytes.data() + at, 3});
    }
    if (at < bytes.size()) {
        put(bytes.substr(at));
    }
}

} // namespace

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
    AppendEscaped(value, m_page);
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
    AppendBase64(jpeg, m_page);
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
    AppendEscaped(text, m_page);
    return *this;
}

Html& Html::Foreign(std::string_view text) {
    return Open("bdi").Shown(text).Close("bdi");
}

Html& Html::Foreign(const CString& text) {
    return Foreign(std::string_view(BytesFromText(text)));
}

std::size_t Html::Place() {
    Fill();
    return m_page.size();
}

void Html::Insert(std::size_t place, Html& part) {
    m_page.insert(place, part.Finish());
}

std::string Html::Finish() {
    Fill();
    return std::move(m_page);
}

std::string Base64(std::string_view bytes) {
    std::string text;
    AppendBase64(bytes, text);
    return text;
}

} // namespace nqp2::page
