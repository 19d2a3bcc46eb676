// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/Export.h"

namespace nqp2 {

/// Lets the drive letter `drive` (one letter, any case, with or without ":") stand for the POSIX
/// folder `folder`. An empty folder removes the entry. Returns false when `drive` is no letter.
/// Process-wide and safe to call from any thread; set drives before reading cards.
NQP2_API bool MapDrive(const wchar_t* drive, const char* folder);

/// Whether a folder stands behind the drive letter.
NQP2_API bool IsDriveMapped(wchar_t drive);

} // namespace nqp2
