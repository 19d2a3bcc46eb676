// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/card_layout.h"

#include <string_view>

namespace nqp2::media {

CString WithDrive(const CString& root) {
    return root.Find(L':') < 0 ? root + L":" : root;
}

CString ContentsFolder(const CString& root) {
    return WithDrive(root) + L"\\CONTENTS\\";
}

bool IsPlainName(const CString& name) {
    constexpr std::wstring_view kUnsafe(L"\\/:\0", 4);
    constexpr int kLongestName = 255; // of every file system that a card or its copy stands on
    return name.GetLength() <= kLongestName &&
           name.View().find_first_of(kUnsafe) == std::wstring_view::npos;
}

bool IsCompanion(const CString& path) {
    return path.Mid(path.ReverseFind(L'\\') + 1).Left(2) == L"._";
}

} // namespace nqp2::media
