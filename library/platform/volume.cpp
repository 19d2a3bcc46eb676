// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/volume.h"

#include <charconv>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace nqp2::platform {

namespace {

/// A name as it is on the volume: what file names cannot hold is written as "\x20".
std::string Plain(std::string_view name) {
    constexpr std::size_t kEscapeDigits = 2;
    std::string plain;
    for (std::size_t at = 0; at < name.size(); ++at) {
        unsigned char byte = 0;
        const std::string_view rest = name.substr(at);
        if (rest.starts_with("\\x") && rest.size() >= 2 + kEscapeDigits) {
            const char* const end = rest.data() + 2 + kEscapeDigits;
            if (std::from_chars(rest.data() + 2, end, byte, 16).ptr == end) {
                plain += static_cast<char>(byte);
                at += 1 + kEscapeDigits;
                continue;
            }
        }
        plain += name[at];
    }
    return plain;
}

} // namespace

std::string VolumeName(const std::string& folder, const std::string& names) {
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
            return Plain(links->path().filename().native());
        }
    }
    return {};
}

} // namespace nqp2::platform
