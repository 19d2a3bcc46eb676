// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>
#include <map>
#include <vector>

/// One stretch of a clip that was taken in. Frames of the clip, both ends included.
struct tag_P2SegInfo {
    std::int32_t InPoint = 0;  ///< first frame, from 0
    std::int32_t OutPoint = 0; ///< last frame
};

namespace nqp2 {

/// What was taken in, by clip name.
using IngestClips = std::map<CString, std::vector<tag_P2SegInfo>>;
/// The same for several cards, by card path.
using IngestRequest = std::map<CString, IngestClips>;

} // namespace nqp2
