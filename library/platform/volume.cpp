// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/volume.h"

#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace nqp2::platform {

std::string VolumeSerial(const std::string& folder) {
    constexpr const char* kNames = "/dev/disk/by-uuid"; // links to the devices
    struct stat facts = {};
    std::error_code error;
    std::filesystem::directory_iterator names(kNames, error);
    if (error || stat(folder.c_str(), &facts) != 0) {
        return {};
    }
    for (const std::filesystem::directory_iterator end; names != end; names.increment(error)) {
        struct stat node = {};
        if (stat(names->path().c_str(), &node) == 0 && S_ISBLK(node.st_mode) &&
            node.st_rdev == facts.st_dev) {
            return names->path().filename().native();
        }
    }
    return {};
}

} // namespace nqp2::platform
