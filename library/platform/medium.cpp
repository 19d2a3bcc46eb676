// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/medium.h"

#include <algorithm>

namespace nqp2::platform {
namespace {

/// A share may be mounted from its root or from a folder of it.
bool IsOrHolds(const std::string& disk, const std::string& other) {
    return other.starts_with(disk) &&
           (other.size() == disk.size() || disk.ends_with('/') || other[disk.size()] == '/');
}

} // namespace

bool AreApart(const MediumFacts& one, const MediumFacts& other) {
    const auto isOf = [&](const std::string& disk) {
        return std::any_of(other.disks.begin(), other.disks.end(), [&](const std::string& each) {
            return IsOrHolds(disk, each) || IsOrHolds(each, disk);
        });
    };
    return !one.disks.empty() && !other.disks.empty() &&
           std::none_of(one.disks.begin(), one.disks.end(), isOf);
}

} // namespace nqp2::platform
