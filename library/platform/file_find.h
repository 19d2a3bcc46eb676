// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/file_system.h"

#include <string>
#include <vector>

namespace nqp2::platform {

/// One entry that a pattern found.
struct FoundFile {
    CString path;          ///< the folder as it was asked for, followed by the name
    CString title;         ///< the name without its extension
    std::string posixPath; ///< the same file for the file system
    bool isFolder = false;
    bool isSpecial = false; ///< a pipe, socket or device, or a link that leads nowhere
    /// False for a name with a backslash: `path` would lead to another file, perhaps far outside
    /// of the folder, and must not be opened.
    bool pathIsSafe = true;
};

/// Enumerates `pattern`, an interface path whose last component may hold "*" and "?" (letter case
/// ignored), in the file system's order. "." and ".." are never found. `status` tells whether the
/// folder could be read to its end.
std::vector<FoundFile> FindFiles(const CString& pattern, IoStatus& status);

/// Whether a name fits a pattern of "*" and "?", without regard to letter case.
bool MatchesPattern(std::wstring_view name, std::wstring_view pattern);

} // namespace nqp2::platform
