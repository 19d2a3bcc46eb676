// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "NQP2ParserU/CString.h"

#include <cstddef>

namespace nqp2::edl {

/// Reads that a missing node leaves empty without a word.
inline constexpr int kIgnoreMissing = 1;

/// What a list may hold; one with more is neither read nor written. Editors make some hundred events,
/// each of which becomes a record of nearly a kilobyte. Text counts as the UTF-8 of the values that
/// are read.
inline constexpr std::size_t kMaxEvents = 65'536;
/// What the lists of one folder may hold together; those that would go beyond are left out.
inline constexpr std::size_t kMaxEventsOfFolder = 4 * kMaxEvents;
inline constexpr std::size_t kMaxText = std::size_t{16} << 20;

/// Where edit lists lie below a card's root, and where the cards themselves keep them.
inline constexpr const char* kEditListFolder = media::kEditLists.Bytes();
inline constexpr const char* kContentsEditListFolder = media::kContentsEditLists.Bytes();

/// The same as interface paths of a card path.
inline CString EditListFolder(const CString& path) {
    return media::WithDrive(path) + media::kEditLists.BelowDrive();
}

inline CString ContentsEditListFolder(const CString& path) {
    return media::WithDrive(path) + media::kContentsEditLists.BelowDrive();
}

/// The AVC-I codecs whose class edit lists look at: fewer than the clip readers know; kept, hosts
/// rely on it.
bool IsClassCodec(const CString& codec);

} // namespace nqp2::edl
