// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "worker/outcome.h"

#include <functional>

namespace nqp2::worker {

/// Describes a camera file, or a P2 clip by its metadata file, as docs/worker.md says. What `info`
/// holds for name and date stays; all of it does on failure. A camera file is given up when `goesOn`
/// returns false.
Outcome DescribeClip(const CString& path, const std::function<bool()>& goesOn,
                     NQP2BaseClipInfo& info);

} // namespace nqp2::worker
