// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::platform {

/// The POSIX folder behind a drive letter (any case); empty when the letter is not mapped.
std::string DriveFolder(wchar_t drive);

/// Whether an element is one of the 26 letters that can name a drive.
bool IsDriveLetter(wchar_t ch);

} // namespace nqp2::platform
