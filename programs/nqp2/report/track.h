// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "page/html.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::report {

using page::Html;
using page::Own;

/// A stretch of a track.
struct Block {
    std::int64_t start = 0;
    std::int64_t length = 0;
    Own kind = "piece"; ///< what it looks like
    std::string label;  ///< "" for none
    std::string below;  ///< a second line
    std::string tip;    ///< shown by pointing at it
    std::string link;   ///< the place on the page that it leads to, "" for none
};

/// Most blocks that a track shows.
inline constexpr std::size_t kMostBlocks = 400;

/// Draws blocks on a line that is `length` long, which is as wide as the page lets it be. `marks`
/// are points on it.
void PutTrack(Html& html, Own kind, std::int64_t length, const std::vector<Block>& blocks,
              const std::vector<std::int64_t>& marks = {});

} // namespace nqp2::report
