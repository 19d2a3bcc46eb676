// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <string_view>

namespace nqp2 {

/// Lets the drive letter `drive` (one letter, any case, with or without ":") stand for the POSIX
/// folder `folder`. An empty folder removes the entry. Returns false when `drive` is no letter.
/// Process-wide and safe to call from any thread; set drives before reading cards.
NQP2_API bool MapDrive(const wchar_t* drive, const char* folder);

/// MapDrive for a text as command lines hold it, "E=/media/card" in UTF-8. Returns false, and maps
/// nothing, when it names no letter or no folder.
NQP2_API bool MapDriveFromArgument(std::string_view argument);

/// Whether the drive letter is mapped to a folder.
NQP2_API bool IsDriveMapped(wchar_t drive);

} // namespace nqp2
