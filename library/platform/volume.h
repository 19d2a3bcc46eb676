// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::platform {

/// The serial number of the volume that a folder lies on, by the system's names of volumes, for
/// which no device is read. "" when they name none, as for media without a device.
std::string VolumeSerial(const std::string& folder);

} // namespace nqp2::platform
