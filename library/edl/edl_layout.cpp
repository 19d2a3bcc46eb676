// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "edl/edl_layout.h"

#include "platform/number_text.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace nqp2::edl {
namespace {

constexpr int kLastNumber = 999;

/// Appends the titles of the files that fit the pattern. Returns whether the folder, if it exists,
/// could be read to its end.
bool AddTitles(const platform::Place& folder, const CString& pattern,
               std::vector<CString>& titles) {
    platform::IoStatus status;
    for (const platform::FoundFile& file : folder.List(pattern, status)) {
        if (!file.isFolder) {
            titles.push_back(file.title);
        }
    }
    return status || status.error == platform::IoError::NotFound;
}

CString NumberText(int number) {
    CString text;
    text.Format(L"P%03d", number);
    return text;
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
        if (suffix.GetLength() < kLength && !platform::IsDigit(ch)) {
            suffix += ch;
        }
    }
    return suffix;
}

CString TitleOf(const CString& name) {
    return name.Left(name.ReverseFind(L'.'));
}

CString FileName(std::int64_t number, const CString& suffix) {
    CString name;
    name.Format(L"P%03d%s.xml", number, suffix);
    return name.MakeUpper();
}

} // namespace

std::optional<EditListNumbers> EditListNumbers::Read(const std::vector<platform::Place>& folders,
                                                     const CString& pattern) {
    EditListNumbers numbers;
    const bool whole =
        std::all_of(folders.begin(), folders.end(), [&](const platform::Place& folder) {
            return AddTitles(folder, pattern, numbers.m_titles);
        });
    return whole ? std::optional(std::move(numbers)) : std::nullopt;
}

std::optional<CString> EditListNumbers::NewName(const CString& id) const {
    std::int64_t number = LargestNumber(m_titles) + 1;
    if (number > kLastNumber) {
        if (m_titles.size() == kLastNumber) {
            return std::nullopt;
        }
        for (int gap = 1; gap < kLastNumber; ++gap) {
            if (!IsTaken(gap)) {
                number = gap;
                break;
            }
        }
    }
    return FileName(number, Suffix(id));
}

bool EditListNumbers::IsTaken(int number) const {
    const CString text = NumberText(number);
    return std::any_of(m_titles.begin(), m_titles.end(),
                       [&](const CString& title) { return title.Find(text) >= 0; });
}

bool EditListNumbers::Holds(const CString& name) const {
    const CString title = TitleOf(name);
    return std::any_of(m_titles.begin(), m_titles.end(),
                       [&](const CString& each) { return each.CompareNoCase(title) == 0; });
}

void EditListNumbers::Add(const CString& name) {
    m_titles.push_back(TitleOf(name));
}

bool NewEditListName(const CString& root, const CString& id, CString& name) {
    const platform::Place folder =
        platform::Place(media::WithDrive(root)).Below(media::kEditLists.BelowDrive());
    if (!folder.Exists()) {
        return false;
    }
    const std::optional<EditListNumbers> numbers = EditListNumbers::Read({folder});
    const std::optional<CString> found = numbers ? numbers->NewName(id) : std::nullopt;
    name = found.value_or(name);
    return found.has_value();
}

bool IsNumberTaken(int number, const CString& pattern) {
    const platform::PathParts parts = platform::SplitPath(pattern);
    const std::optional<EditListNumbers> numbers =
        EditListNumbers::Read({parts.folder}, parts.name);
    return !numbers || numbers->IsTaken(number);
}

} // namespace nqp2::edl
