// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <functional>

namespace nqp2 {

/// Gives the folder as an interface path; called whenever a parser is made.
using FolderLookup = std::function<CString()>;

/// Replaces the lookup of the folder that holds the system's libraries; an empty function
/// restores the built-in one. Returns the lookup that was set before.
NQP2_API FolderLookup SetSystemFolderLookup(FolderLookup lookup) noexcept;

} // namespace nqp2
