// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace nqp2::platform {

/// What a folder's files lie on; asked by Folder::Medium.
struct MediumFacts {
    /// The whole disks behind the file system ("8:0"), through partitions, volumes and loop files;
    /// a server with its share ("server:/share", "//server/share"). Empty: unknown, or no medium
    /// at all, as memory is none.
    std::vector<std::string> disks;
    std::string server;     ///< that it is reached through; empty when it is none
    std::string fileSystem; ///< "ext4", "vfat", as the system calls it; empty: unknown
    std::uint64_t largestFile = std::numeric_limits<std::uint64_t>::max(); ///< bytes
    bool isReadOnly = false;
};

/// Whether both are known and have no disk in common: only then one failure spares one of them.
bool AreApart(const MediumFacts& one, const MediumFacts& other);

} // namespace nqp2::platform
