// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/foreign_text.h"

#include <algorithm>
#include <string_view>

namespace nqp2::tool {
namespace {

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
