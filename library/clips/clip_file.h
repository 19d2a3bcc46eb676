// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/DiskFormat.h"
#include "NQP2ParserU/FixedTypes.h"
#include "NQP2ParserU/P2Clip.h"

class CMarkupMSXML;

/// What is read from a single clip file: a clip, or the format of its card.
namespace nqp2::clips {

class CardReader;

/// Reads the clip `clipName` of the card at `root`, as a host asks for one by name: kRead, or
/// kCannotRead with the path of the file that was tried in `clip.XmlPath`.
__int64 LoadNamedClip(const CString& root, const CString& clipName, CardReader& reader,
                      _tag_P2Clip& clip);

/// Reads one clip file as a scan does, with the card taken from its path; false when it does not
/// load.
bool LoadClipFile(const CString& path, CardReader& reader, _tag_P2Clip& clip);

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
