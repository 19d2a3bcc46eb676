// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <string>
#include <string_view>

namespace nqp2 {

/// Makes or replaces a file as a whole: written beside it under a hidden name, flushed, and renamed
/// over it. When that fails the old file stays as it was, and nothing is left behind. What is no
/// regular file is not replaced. What killed writers have left in its folder is removed. Returns
/// the system's reason for a failure, "" when it is done.
NQP2_API std::string WriteWholeFile(const std::string& path, std::string_view content) noexcept;

} // namespace nqp2
