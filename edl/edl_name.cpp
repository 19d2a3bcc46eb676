// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_name.h"

#include "platform/case_blind.h"
#include "platform/file_find.h"
#include "platform/number_text.h"
#include "platform/PathText.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace nqp2::edl {
namespace {

constexpr int kLastNumber = 999;

/// The titles of the files that the pattern finds; nothing when the folder cannot be read to its
/// end, because a number that is not seen would be given twice.
std::optional<std::vector<CString>> Titles(const CString& pattern) {
    platform::IoStatus status;
    std::vector<CString> titles;
    for (const platform::FoundFile& file : platform::FindFiles(pattern, status)) {
        if (!file.isFolder) {
            titles.push_back(file.title);
        }
    }
    const bool whole = status || status.error == platform::IoError::NotFound;
    return whole ? std::optional(std::move(titles)) : std::nullopt;
}

CString NumberText(int number) {
    CString text;
    text.Format(L"P%03d", number);
    return text;
}

bool IsTaken(int number, const std::vector<CString>& titles) {
    const CString text = NumberText(number);
    return std::any_of(titles.begin(), titles.end(),
                       [&](const CString& title) { return title.Find(text) >= 0; });
}

std::int64_t LargestNumber(const std::vector<CString>& titles) {
    std::int64_t largest = 0;
    for (const CString& title : titles) {
        largest = std::max<std::int64_t>(largest, platform::ToInt32(title.Mid(1).View()));
    }
    return largest;
}

/// The first two characters that are no decimal digits.
CString Suffix(const CString& id) {
    constexpr int kLength = 2;
    CString suffix;
    for (const wchar_t ch : id.View()) {
        if (suffix.GetLength() < kLength && (ch < L'0' || ch > L'9')) {
            suffix += ch;
        }
    }
    return suffix;
}

CString FileName(std::int64_t number, const CString& suffix) {
    CString name;
    name.Format(L"P%03d%s.xml", number, suffix);
    return name.MakeUpper();
}

} // namespace

bool NewEditListName(const CString& folder, const CString& id, CString& name) {
    if (!platform::PathExists(PosixPath(folder))) {
        return false;
    }
    // One enumeration answers for every number that is tried.
    const std::optional<std::vector<CString>> titles = Titles(folder + L"*.XML");
    if (!titles) {
        return false;
    }
    const CString suffix = Suffix(id);
    std::int64_t number = LargestNumber(*titles) + 1;
    if (number > kLastNumber) {
        if (titles->size() == kLastNumber) {
            return false;
        }
        for (int gap = 1; gap < kLastNumber; ++gap) {
            if (!IsTaken(gap, *titles)) {
                number = gap;
                break;
            }
        }
    }
    name = FileName(number, suffix);
    return true;
}

bool IsNumberTaken(int number, const CString& pattern) {
    const std::optional<std::vector<CString>> titles = Titles(pattern);
    return !titles || IsTaken(number, *titles);
}

} // namespace nqp2::edl
