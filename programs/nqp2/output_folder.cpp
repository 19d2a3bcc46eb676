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

} // namespace nqp2::tool
