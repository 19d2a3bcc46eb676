// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::platform {

/// The serial number of the volume that a folder lies on, by the system's names of volumes, for
/// which no device is read: `names` holds a link to the device for each. "" when they name none, as
/// for media without a device.
std::string VolumeSerial(const std::string& folder, const std::string& names = "/dev/disk/by-uuid");

} // namespace nqp2::platform
