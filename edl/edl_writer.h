// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2EDL.h"
#include "platform/CString.h"

class CMarkupMSXML;

namespace nqp2::edl {

/// Writes an edit list to the card under the given name (extension added when it has none), or, for
/// an empty one, under the next free name. What the edit is made of (edit unit, rate, codec) comes
/// from the first event's clip that is on the card. `saved` receives the file's path. Returns false
/// for any failure; nothing but the folder is on the card then.
bool WriteEditList(const CString& cardPath, const tag_P2EDL& edl, const CString& givenName,
                   CMarkupMSXML& reader, CString& saved);

} // namespace nqp2::edl
