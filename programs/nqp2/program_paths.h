// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::tool {

/// A program of this installation: beside this one as in a build, else where an installation puts
/// it. Throws Failure when it is not there, with `advice` behind where it was looked for.
std::string OwnProgram(const std::string& name, const std::string& advice);

/// A path of the system, absolute and without links and steps upward; a part that is not there is
/// taken as it is written. Throws Failure when it cannot be told.
std::string WholePath(const std::string& path);

} // namespace nqp2::tool
