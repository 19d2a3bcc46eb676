// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/OleDateTime.h"

namespace nqp2::media {

/// Reads a date text of the length of "2005-02-01T08:58:44+08:00" by its fixed positions; the zone
/// is ignored. A text of another length leaves `moment` as it is; an impossible date sets its
/// status. Returns whether the length fitted.
bool ReadClipDate(const CString& text, COleDateTime& moment);

/// The text without its zone suffix: from the last "+" at or after the "T", else from the last
/// "-" there. A text without "T" is kept whole.
CString WithoutZone(const CString& text);

} // namespace nqp2::media
