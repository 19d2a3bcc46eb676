// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <string>
#include <vector>

namespace nqp2 {

/// Goes on as another program, in this process: with its standard streams, its working folder and
/// its environment. `program` is a path, `arguments` are those behind the program's own name.
/// Comes back only when that cannot be done, with the system's error number (errno).
NQP2_API int BecomeProgram(const std::string& program,
                           const std::vector<std::string>& arguments) noexcept;

} // namespace nqp2
