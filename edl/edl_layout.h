// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "platform/CString.h"

namespace nqp2::edl {

/// Reads that a missing node leaves empty without a word.
inline constexpr int kIgnoreMissing = 1;

/// Where edit lists lie below a card's root, and where the cards themselves keep them.
inline constexpr const char* kEditListFolder = "EDITLIST";
inline constexpr const char* kContentsEditListFolder = "CONTENTS/EDITLIST";

/// The same as interface paths of a card path.
inline CString EditListFolder(const CString& path) {
    return media::WithDrive(path) + L"\\EDITLIST\\";
}

inline CString ContentsEditListFolder(const CString& path) {
    return media::ContentsFolder(path) + L"EDITLIST\\";
}

/// The AVC-I codecs whose class edit lists look at: fewer than the clip readers know; kept, hosts
/// rely on it.
bool IsClassCodec(const CString& codec);

} // namespace nqp2::edl
