// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "NQP2ParserU/CString.h"
#include "platform/place.h"

#include <cstddef>
#include <optional>
#include <vector>

/// What the files of edit lists are called and what they may hold.
namespace nqp2::edl {

/// What a list may hold; one with more is neither read nor written. Editors make some hundred
/// events, each of which becomes a record of nearly a kilobyte. Text counts as the UTF-8 of the
/// values that are read.
inline constexpr std::size_t kMaxEvents = 65'536;
inline constexpr std::size_t kMaxText = std::size_t{16} << 20;

/// The numbers of the edit lists that there are, from one look into their folders.
class EditListNumbers {
public:
    /// Of the files in the folders that fit the pattern; a folder that is missing has no lists.
    /// Nothing when one cannot be read to its end, because a number that is not seen would be given
    /// twice.
    static std::optional<EditListNumbers> Read(const std::vector<platform::Place>& folders,
                                               const CString& pattern = media::kMetadataPattern);

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

/// The new name for a list in the folder of the card's root. Returns false when there is none and
/// when the folder is missing.
bool NewEditListName(const CString& root, const CString& id, CString& name);

/// Whether a file that `pattern` finds has the number in its title; also when none can be told.
bool IsNumberTaken(int number, const CString& pattern);

} // namespace nqp2::edl
