// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DiskFormat.h"
#include "NQP2ParserU/FixedTypes.h"

class CMarkupMSXML;

namespace nqp2::clips {

// The format of a card is that of its first clip that is well-formed. kCannotRead without a
// contents folder; kRead without such a clip too, with outputs that stay as they were.

/// The coarse form: the codec's name alone decides about the code type.
__int64 ReadCoarseFormat(const CString& root, CMarkupMSXML& reader, eCodeType& codeType,
                         eP2_VIDEO_STANDARD& standard);

/// The texts as they are in the file; `class50` is 1 for AVC-Intra 50 at 1080/50i, else 0.
__int64 ReadFormatTexts(const CString& root, CMarkupMSXML& reader, CString& frameRate,
                        CString& codec, CString& editUnit, int& class50);

/// Both, and whether a clip was found.
__int64 ReadFormat(const CString& root, CMarkupMSXML& reader, DiskFormat& format);

} // namespace nqp2::clips
