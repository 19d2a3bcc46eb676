// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/manifest.h"

namespace nqp2::offload {

/// What a list of hashes that is made now says of itself: when, on which machine, by which program.
mhl::ManifestHead NewHead(mhl::Process process);

} // namespace nqp2::offload
