// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"

#include <string_view>

namespace nqp2::platform {

/// A fresh random identifier (RFC 4122 version 4). Throws std::runtime_error when the system
/// gives no random bytes.
GUID NewGuid();

/// 8-4-4-4-12 digits in lower case.
CString GuidText(const GUID& guid);

/// Reads the 8-4-4-4-12 form, digits in any case. Returns false and leaves `guid` all zero for
/// any other text.
bool GuidFromText(std::wstring_view text, GUID& guid);

/// Reads 32 digits without hyphens, in any case. All zero for any other text.
GUID GuidFromDigits(std::wstring_view digits);
GUID GuidFromDigits(std::string_view digits);

} // namespace nqp2::platform
