// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/volume.h"

#include <filesystem>
#include <sys/stat.h>
#include <system_error>

namespace nqp2::platform {

std::string VolumeSerial(const std::string& folder, const std::string& names) {
    struct stat facts = {};
    std::error_code error;
    std::filesystem::directory_iterator links(names, error);
    if (error || stat(folder.c_str(), &facts) != 0) {
        return {};
    }
    for (const std::filesystem::directory_iterator end; links != end; links.increment(error)) {
        struct stat node = {};
        if (stat(links->path().c_str(), &node) == 0 && S_ISBLK(node.st_mode) &&
            node.st_rdev == facts.st_dev) {
            return links->path().filename().native();
        }
    }
    return {};
}

} // namespace nqp2::platform
