// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/worker_path.h"

#include "nqp2/card.h"
#include "nqp2/console.h"
#include "NQP2ParserU/DriveMap.h"
#include "NQP2ParserU/PathText.h"
#include "NQP2ParserU/TextBytes.h"

#include <filesystem>
#include <system_error>

namespace nqp2::tool {
namespace {

/// A part that is not there is taken as it is written.
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

} // namespace

CString WorkerPath(const std::string& argument) {
    if (argument.empty()) {
        throw Failure("", "is no path", "it is empty", kUsage);
    }
    const CString text = TextFromBytes(argument);
    if (IsMappedDrive(text)) {
        return text;
    }
    const CString path = InterfaceRoot(WholePath(argument));
    if (path.IsEmpty()) {
        throw Failure(argument, "cannot be read", "a path must not contain \":\\\"");
    }
    return path;
}

std::vector<std::string> DriveArguments() {
    std::vector<std::string> arguments;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        if (IsDriveMapped(static_cast<wchar_t>(letter))) {
            const std::string drive(1, letter);
            arguments.emplace_back("--drive");
            arguments.push_back(drive + '=' + WholePath(PosixPath(TextFromBytes(drive + ":\\"))));
        }
    }
    return arguments;
}

} // namespace nqp2::tool
