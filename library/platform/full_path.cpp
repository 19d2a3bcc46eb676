// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/full_path.h"

#include "NQP2ParserU/PathText.h"
#include "platform/unicode.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace nqp2::platform {

CString FullPath(const CString& path) {
    const std::string file = PosixPath(path);
    if (file.empty() || file.front() == '/') {
        return path;
    }
    std::error_code error;
    const std::filesystem::path current = std::filesystem::current_path(error);
    return error ? path : TextFromNameBytes((current / "").native()) + path;
}

} // namespace nqp2::platform
