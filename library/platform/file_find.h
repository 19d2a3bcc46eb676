// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/place.h"

#include <vector>

namespace nqp2::platform {

/// Enumerates `pattern`, an interface path whose last component may hold "*" and "?" (letter case
/// ignored), in the file system's order. "." and ".." are never found. `status` tells whether the
/// folder could be read to its end.
std::vector<FoundFile> FindFiles(const CString& pattern, IoStatus& status);

} // namespace nqp2::platform
