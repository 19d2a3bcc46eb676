// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/FixedTypes.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/ScanReport.h"

class CMarkupMSXML;

namespace nqp2::clips {

/// Appends a record for every clip file below `contents` (a card's contents folder with its
/// trailing separator) that loads, in the file system's order. A file that does not load is
/// skipped; without a reader none loads. `report`, when given, hears of everything skipped.
void ScanClips(const CString& contents, CMarkupMSXML* reader, bool keepDigit,
               CArray<_tag_P2Clip>& clips, ScanReport* report);

/// The same for the card at `root`: kRead, or kCannotRead when it has no contents folder.
__int64 LoadClips(const CString& root, CMarkupMSXML* reader, bool keepDigit,
                  CArray<_tag_P2Clip>& clips, ScanReport* report);

} // namespace nqp2::clips
