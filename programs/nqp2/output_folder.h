// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::tool {

/// Makes the folder that several files go into, and those above it. Throws Failure.
void MakeFolder(const std::string& folder);

} // namespace nqp2::tool
