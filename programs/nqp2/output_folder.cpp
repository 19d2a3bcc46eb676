// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/output_folder.h"

#include "console/console.h"

#include <filesystem>
#include <system_error>

namespace nqp2::tool {

void MakeFolder(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw Failure(folder, "cannot be made", error.message());
    }
}

void RequireNew(const std::string& file) {
    std::error_code error;
    const std::filesystem::file_type type = std::filesystem::symlink_status(file, error).type();
    if (type == std::filesystem::file_type::none) {
        throw Failure(file, "cannot be looked for", error.message());
    }
    if (type != std::filesystem::file_type::not_found) {
        throw Failure(file, "is there already", "nothing is replaced");
    }
}

} // namespace nqp2::tool
