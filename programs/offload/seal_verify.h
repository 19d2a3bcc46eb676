// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"

namespace nqp2::offload {

struct Arguments;

/// Holds a folder against its history, and adds a generation where that was asked for.
tool::Status RunVerify(tool::Console& console, const Arguments& arguments);

/// The same for a folder that may have no history, of which there is a generation afterwards.
tool::Status RunSeal(tool::Console& console, const Arguments& arguments);

} // namespace nqp2::offload
