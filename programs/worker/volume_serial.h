// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "worker/outcome.h"

namespace nqp2::worker {

/// The serial number of the volume that holds a path: the device's own word, or for a user who may
/// not read it the system's device database, never a remembered number. Fails, with `serial` empty,
/// when neither tells, and for a file system without a device (network mounts, memory).
Outcome FindVolumeSerial(const CString& path, CString& serial);

} // namespace nqp2::worker
