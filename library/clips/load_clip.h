// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/FixedTypes.h"
#include "NQP2ParserU/P2Clip.h"

class CMarkupMSXML;

namespace nqp2::clips {

/// Reads the clip `clipName` of the card at `root`, as a host asks for one by name: kRead, or
/// kCannotRead with the path of the file that was tried in `clip.XmlPath`.
__int64 LoadNamedClip(const CString& root, const CString& clipName, CMarkupMSXML& reader,
                      _tag_P2Clip& clip);

/// Reads one clip file as a scan does, with the card taken from its path; false when it does not
/// load.
bool LoadClipFile(const CString& path, CMarkupMSXML& reader, _tag_P2Clip& clip);

} // namespace nqp2::clips
