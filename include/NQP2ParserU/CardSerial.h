// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"

namespace nqp2 {

/// The serial number of a card as its clips and edit lists tell it: the number of the card on
/// which, by the most of them, clips lie that are here. "" when none tells, and when there is no
/// memory.
NQP2_API CString CardSerial(const CArray<_tag_P2Clip>& clips,
                            const CArray<tag_P2EDL>& lists) noexcept;

} // namespace nqp2
