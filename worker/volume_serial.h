// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/CString.h"
#include "worker/outcome.h"

namespace nqp2::worker {

/// The serial number of the volume that holds a path. Fails, with `serial` empty, for a file system
/// that keeps none (network mounts, memory) and for a device that may not be read.
Outcome FindVolumeSerial(const CString& path, CString& serial);

} // namespace nqp2::worker
