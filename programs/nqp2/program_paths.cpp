// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/program_paths.h"

#include "console/console.h"
#include "NQP2ParserU/ProgramFolder.h"

#include <filesystem>
#include <system_error>

namespace nqp2::tool {

std::string OwnProgram(const std::string& name, const std::string& advice) {
    const std::string folder = ProgramFolder();
    for (const char* const place : {"/", "/" NQP2_LIBEXEC_FROM_BIN "/"}) {
        std::string program = folder + place + name;
        std::error_code error;
        if (std::filesystem::exists(program, error)) {
            return program;
        }
    }
    throw Failure(name, "is not there", "looked beside nqp2 and in its libexec folder" + advice,
                  kWorkerFailed);
}

std::string WholePath(const std::string& path) {
    std::error_code error;
    std::filesystem::path whole = std::filesystem::absolute(path, error);
    if (!error) {
        whole = std::filesystem::weakly_canonical(whole, error);
    }
    if (error) {
        throw Failure(path, "cannot be reached", error.message());
    }
    return whole.native();
}

} // namespace nqp2::tool
