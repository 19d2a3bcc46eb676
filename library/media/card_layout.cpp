// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/card_layout.h"

#include "platform/number_text.h"
#include "platform/unicode.h"

#include <algorithm>

namespace nqp2::media {
namespace {

template <class Char>
std::basic_string_view<Char> ClipNamePart(std::basic_string_view<Char> file,
                                          std::basic_string_view<Char> extension,
                                          std::size_t digits) {
    const std::size_t dot = file.find_last_of(Char{'.'});
    if (file.starts_with(Char{'.'}) || dot == file.npos || dot <= digits ||
        (!extension.empty() && file.substr(dot) != extension)) {
        return {};
    }
    const std::size_t end = dot - digits;
    const std::basic_string_view<Char> number = file.substr(end, digits);
    return std::all_of(number.begin(), number.end(), platform::IsDigit<Char>)
               ? file.substr(0, end)
               : std::basic_string_view<Char>();
}

} // namespace

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
    return ClipNamePart(file, std::wstring_view(kind.extension.Text()), kind.digits);
}

std::string_view ClipNameIn(std::string_view file, const ClipFileKind& kind) {
    return ClipNamePart(file, std::string_view(kind.extension.Bytes()), kind.digits);
}

ClipFileState StateOf(std::uint64_t size, std::uint64_t promised) {
    if (size == 0) {
        return ClipFileState::Empty;
    }
    return size < promised ? ClipFileState::Short : ClipFileState::Present;
}

CString WithDrive(const CString& root) {
    return root.Find(L':') < 0 ? root + L":" : root;
}

CString ContentsFolder(const CString& root) {
    return WithDrive(root) + kContents.BelowDrive();
}

CString ContentsAbove(const CString& path) {
    const CString folder = path.Left(path.ReverseFind(L'\\'));
    return folder.Left(folder.ReverseFind(L'\\') + 1);
}

CString TitleOf(const CString& path) {
    const CString name = path.Mid(path.ReverseFind(L'\\') + 1);
    const int dot = name.ReverseFind(L'.');
    return dot < 0 ? name : name.Left(dot);
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
