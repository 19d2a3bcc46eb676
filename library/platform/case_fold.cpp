// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/case_fold.h"

#include "platform/unicode.h"

#include <algorithm>
#include <locale.h>
#include <wctype.h>

namespace nqp2::platform {
namespace {

/// Unicode's letters, whatever locale the host has set. Null on a system without it: then only
/// ASCII letters have two cases.
locale_t UnicodeLocale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

char ToUpperAscii(char ch) {
    return ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
}

wchar_t Converted(wchar_t ch, wint_t (*convert)(wint_t, locale_t)) {
    const locale_t locale = UnicodeLocale();
    return locale != nullptr ? static_cast<wchar_t>(convert(static_cast<wint_t>(ch), locale)) : ch;
}

} // namespace

wchar_t ToUpper(wchar_t ch) {
    if (ch >= L'a' && ch <= L'z') {
        return static_cast<wchar_t>(ch - L'a' + L'A');
    }
    return ch <= kLastAscii ? ch : Converted(ch, towupper_l);
}

wchar_t ToLower(wchar_t ch) {
    if (ch >= L'A' && ch <= L'Z') {
        return static_cast<wchar_t>(ch - L'A' + L'a');
    }
    return ch <= kLastAscii ? ch : Converted(ch, towlower_l);
}

std::wstring FoldCase(std::wstring_view text) {
    std::wstring folded(text);
    std::transform(folded.begin(), folded.end(), folded.begin(), ToUpper);
    return folded;
}

std::string FoldNameCase(std::string_view name) {
    const bool isAscii = std::none_of(name.begin(), name.end(), [](char ch) {
        return static_cast<unsigned char>(ch) > static_cast<unsigned char>(kLastAscii);
    });
    if (isAscii) {
        std::string folded(name);
        std::transform(folded.begin(), folded.end(), folded.begin(), ToUpperAscii);
        return folded;
    }
    return NameBytesFromText(FoldCase(TextFromNameBytes(name).View()));
}

bool EqualNoCase(std::wstring_view left, std::wstring_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](wchar_t a, wchar_t b) { return a == b || ToUpper(a) == ToUpper(b); });
}

} // namespace nqp2::platform
