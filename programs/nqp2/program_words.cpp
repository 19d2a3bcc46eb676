// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/program_words.h"

#include "nqp2/card.h"
#include "nqp2/program_paths.h"

#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/ProgramStart.h"
#include "NQP2ParserU/TextBytes.h"

#include <system_error>

namespace nqp2::tool {

std::string PathForProgram(const std::string& argument) {
    if (argument.empty()) {
        throw Failure("", "is no path", "it is empty", kUsage);
    }
    const CString text = TextFromBytes(argument);
    std::string path = WholePath(IsMappedDrive(text) ? PosixPath(text) : argument);
    // What is not there keeps the separator that it was written with.
    const std::size_t last = path.find_last_not_of('/');
    path.resize(last == std::string::npos ? 1 : last + 1);
    return path;
}

void ProgramWords::PutEach(const std::string& key, const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        Put(key, value);
    }
}

Status ProgramWords::Become(const std::string& name, const std::string& advice) const {
    const std::string program = OwnProgram(name, advice);
    const int error = BecomeProgram(program, m_words);
    throw Failure(name, "cannot be run", std::generic_category().message(error), kWorkerFailed);
}

} // namespace nqp2::tool
