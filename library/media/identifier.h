// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"

#include <string_view>

namespace nqp2::media {

/// The 64-digit material identifier made from a GUID; a fresh GUID is made for an all-zero one.
CString IdentifierFromGuid(GUID guid);

/// The GUID in the last 32 digits of an identifier, shorter texts padded with zeros on the left;
/// all zero when those are not hexadecimal. Does not undo IdentifierFromGuid, which appends "2008"
/// behind the digits: kept, hosts rely on both.
GUID GuidFromIdentifier(const CString& identifier);
GUID GuidFromIdentifier(std::string_view utf8);

/// The identifier text that an edit list carries for a GUID (8-4-4-4-12 text, any case): such that
/// GuidFromIdentifier gives the GUID back. A note that is itself a 64-digit identifier ending in
/// the GUID's digits is taken, in upper case. Returns false for a text that is no GUID.
bool IdentifierForGuidText(const CString& guidText, const CString& note, CString& identifier);

} // namespace nqp2::media
