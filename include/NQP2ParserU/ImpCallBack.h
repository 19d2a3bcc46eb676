// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace nqp2 {

/// Progress of a running import: position and total, an abort flag that the callee may set to 1,
/// and the host's own pointer. Called on a thread of the library. It must not release or destroy
/// the parser that calls it; when it throws, the import is asked to stop.
using ImpCallBack = void (*)(std::uint32_t position, std::uint32_t total, std::int32_t& abort,
                             void* context);

} // namespace nqp2
