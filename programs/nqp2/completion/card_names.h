// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "manual/command_page.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// The clips of a card, with their titles, those that cannot be read too; none where there is no
/// card.
std::vector<manual::Meaning> ClipNamesOf(const std::string& card);
/// Its edit lists or playlists.
std::vector<manual::Meaning> ListNamesOf(const std::string& card);

} // namespace nqp2::tool
