// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::tool {

/// Makes the folder that several files go into, and those above it. Throws Failure.
void MakeFolder(const std::string& folder);

/// Throws Failure unless nothing has that path, a link that leads nowhere included.
void RequireNew(const std::string& file);

} // namespace nqp2::tool
