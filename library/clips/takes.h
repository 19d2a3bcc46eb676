// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>
#include <vector>

namespace nqp2::clips {

/// What a clip says of its place in a spanned recording; texts as in the metadata.
struct ClipRelation {
    struct Neighbour {
        CString globalClipID;
        CString clipName;
        CString serialNo;
    };
    CString clipName;
    CString globalClipID;
    std::int64_t offsetInShot = 0;
    Neighbour top;
    Neighbour previous;
    Neighbour next;
};

/// Whether the clip is part of a take at all; most are not, and need not be kept for FindTakes.
bool IsRelated(const ClipRelation& clip);

/// The takes that the clips form, in the order in which their first clips came. Clips without
/// relation form none.
CArray<Take> FindTakes(const std::vector<ClipRelation>& clips);

} // namespace nqp2::clips
