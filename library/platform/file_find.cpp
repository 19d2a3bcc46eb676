// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_find.h"

namespace nqp2::platform {

std::vector<FoundFile> FindFiles(const CString& pattern, IoStatus& status) {
    const PathParts parts = SplitPath(pattern);
    return parts.folder.List(parts.name, status);
}

} // namespace nqp2::platform
