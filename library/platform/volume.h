// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::platform {

/// The system's names of volumes, for which no device is read: folders with a link to the device
/// for each.
inline constexpr const char* kVolumeSerials = "/dev/disk/by-uuid";
inline constexpr const char* kVolumeLabels = "/dev/disk/by-label";

/// The name among `names` of the volume that a folder lies on. "" when they have none, as for media
/// without a device.
std::string VolumeName(const std::string& folder, const std::string& names);

} // namespace nqp2::platform
