// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/history.h"
#include "platform/file_system.h"

#include <string>

namespace nqp2::offload {

/// Why a file of a copy must not make way for one of the card that differs: it is what the copy's
/// own list says, so that the card's is the one that has changed. "" when that cannot be said.
std::string WhyKept(const mhl::History& list, const std::string& path, platform::FileReader& there);

} // namespace nqp2::offload
