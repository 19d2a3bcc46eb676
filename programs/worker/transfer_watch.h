// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/watch.h"

namespace nqp2::worker {

using TransferWatch = copy::Watch;

} // namespace nqp2::worker
