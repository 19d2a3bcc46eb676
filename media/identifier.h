// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"
#include "platform/Guid.h"

namespace nqp2::media {

/// The 64-digit material identifier made from a GUID; a fresh GUID is made for an all-zero one.
CString IdentifierFromGuid(GUID guid);

/// The GUID in the last 32 digits of an identifier, shorter texts padded with zeros on the left;
/// all zero when those are not hexadecimal. Does not undo IdentifierFromGuid, which appends "2008"
/// behind the digits: kept, hosts rely on both.
GUID GuidFromIdentifier(const CString& identifier);

} // namespace nqp2::media
