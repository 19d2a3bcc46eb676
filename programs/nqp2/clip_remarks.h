// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/P2Clip.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// What a clip's metadata tell that cannot be, a sentence each: dates that are none, places and
/// counts that are no numbers, more than is kept. Without metadata what the record alone shows.
std::vector<std::string> RemarksOn(const _tag_P2Clip& clip, const ClipMetadata* metadata);

} // namespace nqp2::tool
