// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/copier.h"
#include "NQP2ParserU/Rewrap.h"
#include "worker/rewrap/request.h"

namespace nqp2::worker::rewrap {

/// Writes the file, reads it back, compares all of it with what was read and gives it its name.
/// Throws a Failure, of which nothing is left; Cancelled when the watch ends it. Units that are
/// read count half in what the watch is told, and half when they are read back.
RewrapResult MakeFile(const Request& request, copy::Watch& watch);

} // namespace nqp2::worker::rewrap
