// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/media_module.h"

namespace nqp2::worker {

/// See MediaModule::Describe.
Outcome ReadMedia(MediaInput& input, MediaFacts& facts);

} // namespace nqp2::worker
