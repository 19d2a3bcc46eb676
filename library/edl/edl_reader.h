// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

class CMarkupMSXML;

namespace nqp2::edl {

/// Reads the document that the reader holds into a fresh record; Name, Date, Identity and IconPath
/// are the caller's. `doubts`, unless null, receives what events say that is no number where one is
/// wanted, without the list's name. Returns false for a document that is no edit list; throws
/// std::length_error for one that holds more than an edit list may.
bool ReadEditList(CMarkupMSXML& reader, tag_P2EDL& edl, CArray<EventDoubt>* doubts);

} // namespace nqp2::edl
