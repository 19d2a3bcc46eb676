// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

class CMarkupMSXML;

namespace nqp2::edl {

// Both append a record for every edit list that can be read, in the file system's order.

/// Of the folder in the card's root. Returns false when it is missing.
bool LoadEditLists(const CString& root, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls);

/// Of both folders of the card; `report` is told what was left out and which folder could not be
/// read to its end. Returns false when neither folder can be reached.
bool LoadCardEditLists(const CString& root, CMarkupMSXML& reader, CArray<tag_P2EDL>& edls,
                       ScanReport& report);

} // namespace nqp2::edl
