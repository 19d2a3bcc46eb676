// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/ProgramStart.h"

#include <cerrno>
#include <new>
#include <unistd.h>

namespace nqp2 {

int BecomeProgram(const std::string& program, const std::vector<std::string>& arguments) noexcept {
    try {
        // The system has no texts of constant bytes; it changes none of them.
        std::vector<char*> texts{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments) {
            texts.push_back(const_cast<char*>(argument.c_str()));
        }
        texts.push_back(nullptr);
        execv(program.c_str(), texts.data());
        return errno;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

} // namespace nqp2
