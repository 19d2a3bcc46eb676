// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ProgramFolder.h"

#include <filesystem>
#include <system_error>

namespace nqp2 {

std::string ProgramFolder() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().native();
}

} // namespace nqp2
