// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/free_clip_name.h"

#include "platform/case_fold.h"
#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace nqp2::worker {
namespace {

constexpr int kMostNumbers = 9999;

/// The number of a name of four digits and two more characters.
std::optional<int> NumberOf(std::wstring_view name) {
    constexpr std::size_t kLength = 6;
    constexpr std::size_t kDigits = 4;
    const std::wstring_view digits = name.substr(0, kDigits);
    if (name.size() != kLength || digits.find_first_not_of(L"0123456789") != digits.npos) {
        return std::nullopt;
    }
    int number = 0;
    for (const wchar_t digit : digits) {
        number = number * 10 + static_cast<int>(digit - L'0');
    }
    return number;
}

} // namespace

Outcome ClipNames::Read(const std::string& contents) {
    return Read(ListByPath(contents));
}

Outcome ClipNames::Read(const ListFolder& list) {
    std::vector<std::wstring> names;
    Outcome outcome = TakenNames(list, names);
    m_taken = std::set<std::wstring>(names.begin(), names.end());
    return outcome;
}

bool ClipNames::IsTaken(const CString& name) const {
    return m_taken.count(platform::FoldCase(name.View())) != 0;
}

void ClipNames::Take(const CString& name) {
    m_taken.insert(platform::FoldCase(name.View()));
}

Outcome ClipNames::FindFree(const CString& wanted, CString& name) const {
    const std::optional<int> number = NumberOf(wanted.View());
    const CString ending = number ? wanted.Right(2) : CString(L"AA");
    for (int step = 0; step < kMostNumbers; ++step) {
        CString candidate;
        candidate.Format(L"%04d%s", (number.value_or(0) + step) % kMostNumbers + 1, ending);
        if (!IsTaken(candidate)) {
            name = candidate;
            return {};
        }
    }
    return Failure("All clip names of the card are taken.");
}

} // namespace nqp2::worker
