// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/outcome.h"

namespace nqp2::worker {

using copy::Failure;
using copy::Outcome;

} // namespace nqp2::worker
