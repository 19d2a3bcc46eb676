// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/card_layout.h"

#include "platform/number_text.h"
#include "platform/unicode.h"

#include <algorithm>

namespace nqp2::media {

std::string SuffixOf(const ClipFileKind& kind, std::size_t number) {
    std::string suffix;
    if (kind.digits != 0) {
        suffix = std::to_string(number);
        suffix.insert(0, kind.digits - std::min(kind.digits, suffix.size()), '0');
    }
    return suffix += kind.extension.Bytes();
}

CString FileNameOf(const ClipFileKind& kind, const CString& clip, std::size_t number) {
    if (kind.digits == 0) {
        return clip + kind.extension.Text(); // most kinds: no suffix is to be made
    }
    return clip + platform::TextFromUtf8(SuffixOf(kind, number));
}

std::wstring_view ClipNameIn(std::wstring_view file, const ClipFileKind& kind) {
    const std::wstring_view extension = kind.extension.Text();
    const std::size_t dot = file.find_last_of(L'.');
    if (file.starts_with(L'.') || dot == std::wstring_view::npos || dot <= kind.digits ||
        (!extension.empty() && file.substr(dot) != extension)) {
        return {};
    }
    const std::size_t end = dot - kind.digits;
    const std::wstring_view number = file.substr(end, kind.digits);
    return std::all_of(number.begin(), number.end(), platform::IsDigit<wchar_t>)
               ? file.substr(0, end)
               : std::wstring_view();
}

CString WithDrive(const CString& root) {
    return root.Find(L':') < 0 ? root + L":" : root;
}

CString ContentsFolder(const CString& root) {
    return WithDrive(root) + kContents.BelowDrive();
}

bool IsPlainName(const CString& name) {
    constexpr std::wstring_view kUnsafe(L"\\/:\0", 4);
    return name.View().size() <= kLongestFileName &&
           name.View().find_first_of(kUnsafe) == std::wstring_view::npos;
}

bool IsCompanion(const CString& path) {
    return path.Mid(path.ReverseFind(L'\\') + 1).Left(2) == L"._";
}

} // namespace nqp2::media
