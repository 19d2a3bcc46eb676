// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/records.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <string>

namespace nqp2::catalogue {

/// Tells which segments of its clips' takes a card lacks: counts them in the holdings, read or
/// unchanged, and adds the gaps. Takes of P2 cards follow from what their clips say of each other,
/// those of other cards are told by the scan.
void AddTakeGaps(CardContents& contents, const CArray<Take>& told, bool isP2);

/// The serial number that the clips and lists of a card tell of it.
std::string SerialOf(const CardContents& contents, const CArray<tag_P2EDL>& lists);

} // namespace nqp2::catalogue
