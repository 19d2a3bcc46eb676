// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <optional>
#include <vector>

namespace nqp2::edl {

/// The numbers of the edit lists that there are, from one look into their folders.
class EditListNumbers {
public:
    /// Of what the patterns find; a folder that is missing has no lists. Nothing when one cannot be
    /// read to its end, because a number that is not seen would be given twice.
    static std::optional<EditListNumbers> Read(const std::vector<CString>& patterns);

    /// A file name for a new list: the number behind the largest there is, up to 999, then the
    /// first gap; two letters of the id text. Nothing when there are 999 lists numbered to the end.
    [[nodiscard]] std::optional<CString> NewName(const CString& id) const;
    /// Whether a list has the number in its title.
    [[nodiscard]] bool IsTaken(int number) const;
    /// Whether a list has that file name, in any letter case.
    [[nodiscard]] bool Holds(const CString& name) const;
    /// Counts a list that came after the look.
    void Add(const CString& name);

private:
    std::vector<CString> m_titles;
};

inline constexpr const wchar_t* kEditLists = L"*.XML";

/// The new name for a list in the folder (with its trailing separator). Returns false when there is
/// none and when the folder is missing.
bool NewEditListName(const CString& folder, const CString& id, CString& name);

/// Whether a file that `pattern` finds has the number in its title; also when none can be told.
bool IsNumberTaken(int number, const CString& pattern);

} // namespace nqp2::edl
