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

class ClipPromises;

/// Appends a record for every clip file of the card at `root` that loads, in the file system's
/// order; without a reader none does. `report`, when given, is told of everything that is skipped,
/// and of the takes that the clips form. `promises`, when given, comes to hold what was read
/// without a tree. Returns kRead, or kCannotRead when the card has no contents folder.
__int64 LoadClips(const CString& root, CMarkupMSXML* reader, bool keepDigit,
                  CArray<_tag_P2Clip>& clips, ScanReport* report, ClipPromises* promises);

} // namespace nqp2::clips
