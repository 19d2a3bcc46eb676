// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The system's table of mounted file systems, as /proc/self/mountinfo writes it.
namespace nqp2::platform {

struct Mount {
    std::string fileSystem; ///< "ext4"
    std::string source;     ///< "/dev/sda1", "server:/share"
    std::string address;    ///< of the server, where the file system tells it
};

/// The mount of that number, or where the system tells no numbers the first of that device
/// ("8:1").
std::optional<Mount> FindMount(std::string_view table, std::optional<std::uint64_t> number,
                               std::string_view device);

/// What is mounted over a network.
struct NetworkShare {
    std::string server; ///< "server", or its address: one server may have many names
    std::string share;  ///< "server:/export", "//server/share"
};

/// Whether a server's name or address stands for the machine that asks, which is called `ownName`.
bool IsOwnServer(const std::string& server, const std::string& ownName);

/// Empty for what is none.
std::optional<NetworkShare> ShareOf(const Mount& mount);

} // namespace nqp2::platform
