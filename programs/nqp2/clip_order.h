// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/clip_table.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// The orders that there are: by name, by date, none.
std::vector<std::string> ClipOrderNames();

/// The clips of all cards in the order of that name: by date those of all together, else card by
/// card.
ClipOrder OrderedClips(const CardScans& scans, const std::string& name);

} // namespace nqp2::tool
