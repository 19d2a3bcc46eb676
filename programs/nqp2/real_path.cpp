// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/real_path.h"

#include "NQP2ParserU/RealPaths.h"

namespace nqp2::tool {

std::string RealPath(const CString& path) {
    // For one run of one command: what it learns of a folder stays true for that long.
    static RealPaths paths;
    return paths.Find(path);
}

} // namespace nqp2::tool
