// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/input_text.h"

#include "console/console.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace nqp2::tool {
namespace {

/// The two ways to write a GUID: "x" is any hexadecimal digit.
constexpr std::string_view kGuidForms[] = {"xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx",
                                           "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"};

constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

bool IsHexDigit(char ch) {
    return kHexDigits.find(ch) != std::string_view::npos;
}

bool HasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(), [](char ch, char model) {
        return model == 'x' ? IsHexDigit(ch) : ch == model;
    });
}

constexpr int kLongestName = 255; ///< UTF-16 units

bool IsControl(wchar_t ch) {
    constexpr wchar_t kDelete = 0x7F;
    return ch < L' ' || ch == kDelete;
}

/// What UTF-16 and XML have no room for.
bool IsNoCharacter(wchar_t ch) {
    constexpr wchar_t kLast = 0x10FFFF;
    return (ch >= 0xD800 && ch <= 0xDFFF) || ch == 0xFFFE || ch == 0xFFFF || ch > kLast;
}

bool IsUnfitForXml(wchar_t ch) {
    const bool blank = ch == L'\t' || ch == L'\n' || ch == L'\r';
    return (ch < L' ' && !blank) || IsNoCharacter(ch);
}

bool IsReserved(wchar_t ch) {
    return std::wstring_view(L"\"*/:<>?\\|").find(ch) != std::wstring_view::npos;
}

template <class Fault>
bool Holds(std::wstring_view text, Fault fault) {
    return std::any_of(text.begin(), text.end(), fault);
}

std::ptrdiff_t Utf16Length(std::wstring_view text) {
    const auto pairs =
        std::count_if(text.begin(), text.end(), [](wchar_t ch) { return ch > 0xFFFF; });
    return static_cast<std::ptrdiff_t>(text.size()) + pairs;
}

} // namespace

std::string GuidText(const GUID& guid) {
    std::string text(kGuidForms[0]);
    char* place = text.data();
    const auto put = [&place](unsigned number, unsigned digits) {
        while (digits > 0) {
            *place++ = kHexDigits[number >> 4U * --digits & 0xFU];
        }
    };
    const auto skipDash = [&place] { ++place; };
    put(guid.Data1, 8);
    skipDash();
    put(guid.Data2, 4);
    skipDash();
    put(guid.Data3, 4);
    skipDash();
    put(guid.Data4[0], 2);
    put(guid.Data4[1], 2);
    skipDash();
    for (std::size_t i = 2; i < std::size(guid.Data4); ++i) {
        put(guid.Data4[i], 2);
    }
    return text;
}

std::optional<GUID> GuidFromForm(std::string_view text) {
    const bool known = std::any_of(std::begin(kGuidForms), std::end(kGuidForms),
                                   [&](std::string_view form) { return HasForm(text, form); });
    if (!known) {
        return std::nullopt;
    }
    CString digits = TextFromBytes(text);
    digits.Remove(L'-');
    return CNQP2Parser::GuidFromUMID(digits);
}

bool FitsXml(const CString& text) {
    return !Holds(text.View(), IsUnfitForXml);
}

const char* FileNameFault(const CString& name, const wchar_t* extension) {
    const std::wstring_view text = name.View();
    const CString whole = name.Find(extension) < 0 ? name + extension : name;
    if (text.empty()) {
        return "it is empty";
    }
    if (Holds(text, IsControl) || Holds(text, IsNoCharacter)) {
        return "it holds what is no character of a name";
    }
    if (Holds(text, IsReserved)) {
        return "names on cards hold none of \"*/:<>?\\|";
    }
    if (text.back() == L'.' || text.back() == L' ') {
        return "names on cards end in no dot or blank";
    }
    return Utf16Length(whole.View()) > kLongestName ? "names on cards have at most 255 characters"
                                                    : "";
}

} // namespace nqp2::tool
