// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "media/identifier.h"

#include "platform/guid_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace nqp2::media {
namespace {

constexpr std::wstring_view kLabelDigits = L"060A2B340101010501010D431300";
constexpr std::wstring_view kClosingDigits = L"2008";
constexpr std::size_t kGuidDigits = 32;
constexpr std::size_t kGroupLengths[] = {8, 4, 4, 4, 12};
constexpr std::size_t kGuidTextLength = kGuidDigits + std::size(kGroupLengths) - 1;

/// The last 32 digits, with zeros in front of a shorter text.
std::array<wchar_t, kGuidDigits> LastDigits(std::wstring_view text) {
    std::array<wchar_t, kGuidDigits> digits;
    digits.fill(L'0');
    text.remove_prefix(text.size() - std::min(text.size(), kGuidDigits));
    std::copy_backward(text.begin(), text.end(), digits.end());
    return digits;
}

std::array<wchar_t, kGuidTextLength> Grouped(const std::array<wchar_t, kGuidDigits>& digits) {
    std::array<wchar_t, kGuidTextLength> text;
    text.fill(L'-');
    auto from = digits.begin();
    auto to = text.begin();
    for (const std::size_t length : kGroupLengths) {
        to = std::copy_n(from, length, to);
        from += static_cast<std::ptrdiff_t>(length);
        to += to == text.end() ? 0 : 1;
    }
    return text;
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
    const auto text = Grouped(LastDigits(identifier.View()));
    GUID guid;
    platform::GuidFromText(std::wstring_view(text.data(), text.size()), guid);
    return guid;
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
