// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ProgramStart.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace nqp2 {

std::string BecomeProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> texts{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        texts.push_back(const_cast<char*>(argument.c_str()));
    }
    texts.push_back(nullptr);
    execv(program.c_str(), texts.data());
    return std::generic_category().message(errno);
}

} // namespace nqp2
