// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value_sink.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/JoinedTakes.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/ScanReport.h"

#include <string>
#include <string_view>
#include <vector>

namespace nqp2::tool {

/// A take and a clip's place in it.
struct ShownTake {
    const JoinedTake* take = nullptr;
    const TakeSegment* segment = nullptr;
};

/// A clip and what is known beside its record. All of it belongs to others.
struct ShownClip {
    const _tag_P2Clip& clip;
    std::string_view card;      ///< its root, a whole POSIX path
    std::string_view cardLabel; ///< what tells it from other cards
    ClipZones zones = {};
    bool hasTimecode = true;
    const ShownTake* take = nullptr;
    const ClipMetadata* metadata = nullptr; ///< null where they were not read
    const CArray<ClipFile>* files = nullptr;
    const std::vector<std::string>* remarks = nullptr; ///< on what it tells; null is none
};

/// Start and end in ISO 8601, "" where they are not told.
CString StartOf(const ShownClip& shown);
CString EndOf(const ShownClip& shown);

/// Shows the clip's record and, as members behind it, what people compute with.
void PutShownClip(ValueSink& sink, const ShownClip& shown);

/// The same with a form and version of its own before all else, as one line of many.
void PutClipLine(ValueSink& sink, const ShownClip& shown);

} // namespace nqp2::tool
