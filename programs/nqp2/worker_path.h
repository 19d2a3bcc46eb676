// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// A file or folder that the user named, as the worker takes it: whole, without links and steps
/// upward, or a mapped drive as it stands. Throws Failure for a path that cannot be said.
CString WorkerPath(const std::string& argument);

/// The mapped drives as arguments of the worker, their folders as whole paths.
std::vector<std::string> DriveArguments();

} // namespace nqp2::tool
