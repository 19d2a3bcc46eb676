// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/card_layout.h"
#include "platform/CString.h"

namespace nqp2::edl {

/// Reads that a missing node leaves empty without a word.
inline constexpr int kIgnoreMissing = 1;

/// Where the edit lists of a card path lie.
inline CString EditListFolder(const CString& path) {
    return media::WithDrive(path) + L"\\EDITLIST\\";
}

/// Where the cards themselves keep them.
inline CString ContentsEditListFolder(const CString& path) {
    return media::ContentsFolder(path) + L"EDITLIST\\";
}

/// The AVC-I codecs whose class edit lists look at: fewer than the clip readers know; kept, hosts
/// rely on it.
bool IsClassCodec(const CString& codec);

} // namespace nqp2::edl
