// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/identifier.h"

#include "platform/guid_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace nqp2::media {
namespace {

constexpr std::wstring_view kLabelDigits = L"060A2B340101010501010D431300";
constexpr std::wstring_view kClosingDigits = L"2008";
constexpr std::size_t kGuidDigits = 32;

/// Of the last 32 digits, with zeros in front of a shorter text.
template <class Char>
GUID GuidFromLastDigits(std::basic_string_view<Char> text) {
    std::array<Char, kGuidDigits> digits;
    digits.fill(Char{'0'});
    text.remove_prefix(text.size() - std::min(text.size(), kGuidDigits));
    std::copy_backward(text.begin(), text.end(), digits.end());
    return platform::GuidFromDigits(std::basic_string_view<Char>(digits.data(), digits.size()));
}

bool IsHexadecimal(std::wstring_view text) {
    return text.find_first_not_of(L"0123456789ABCDEF") == std::wstring_view::npos;
}

} // namespace

CString IdentifierFromGuid(GUID guid) {
    if (guid == GUID()) {
        guid = platform::NewGuid();
    }
    CString digits = platform::GuidText(guid);
    digits.Remove(L'-');
    CString identifier(kLabelDigits);
    identifier.Append(digits.View()).Append(kClosingDigits);
    return identifier.MakeUpper();
}

GUID GuidFromIdentifier(const CString& identifier) {
    return GuidFromLastDigits(identifier.View());
}

GUID GuidFromIdentifier(std::string_view utf8) {
    // A character beyond ASCII is no digit, and its last byte is among the last where it is.
    return GuidFromLastDigits(utf8);
}

bool IdentifierForGuidText(const CString& guidText, const CString& note, CString& identifier) {
    constexpr int kIdentifierDigits = 64;
    GUID guid;
    if (!platform::GuidFromText(guidText.View(), guid)) {
        return false;
    }
    CString digits = guidText;
    digits.Remove(L'-');
    digits.MakeUpper();
    CString label = note;
    label.MakeUpper();
    const bool noteFits = label.GetLength() == kIdentifierDigits && IsHexadecimal(label.View()) &&
                          label.Right(digits.GetLength()) == digits;
    identifier = noteFits ? label : CString(L"060A2B340101010501010D4313000000") + digits;
    return true;
}

} // namespace nqp2::media
