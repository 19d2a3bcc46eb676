// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/base/media_module.h"

namespace nqp2::worker {

/// The module that lies beside the running program, loaded once for the process. Fails when it is
/// missing, cut off or does not fit, and while there are too few descriptors to load it.
const MediaModule& LoadMediaModule();

} // namespace nqp2::worker
