// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2Clip.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// Clips in the order in which they are shown; the records belong to the caller.
using ClipOrder = std::vector<const _tag_P2Clip*>;

/// The orders that there are: by name, by date, none.
std::vector<std::string> ClipOrderNames();

/// The clips in the order of that name.
ClipOrder OrderedClips(const CArray<_tag_P2Clip>& clips, const std::string& name);

} // namespace nqp2::tool
