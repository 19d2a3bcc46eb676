// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2EDL.h"
#include "platform/CArray.h"
#include "platform/CString.h"

class CMarkupMSXML;

namespace nqp2::edl {

/// Reads the document that the reader holds into a fresh record; Name, Date and Identity are the
/// caller's. Returns false for a document that is no edit list.
bool ReadEditList(CMarkupMSXML& reader, const CString& path, tag_P2EDL& edl);

/// Appends a record for every edit list in the folder (with its trailing separator) that loads, in
/// the file system's order.
void ScanEditLists(const CString& folder, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls);

} // namespace nqp2::edl
