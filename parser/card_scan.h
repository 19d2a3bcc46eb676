// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2Clip.h"
#include "parser/ScanReport.h"
#include "platform/CArray.h"
#include "platform/CString.h"

class CMarkupMSXML;

namespace nqp2::parser {

/// Appends a record for every clip file below `contents` (a card's contents folder with its
/// trailing separator) that loads, in the file system's order. A file that does not load is
/// skipped; without a reader none loads. `report`, when given, hears of everything skipped.
void ScanClips(const CString& contents, CMarkupMSXML* reader, bool keepDigit,
               CArray<_tag_P2Clip>& clips, ScanReport* report);

} // namespace nqp2::parser
