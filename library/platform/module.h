// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

/// Loading of optional libraries at run time.
namespace nqp2::platform {

using ModuleHandle = void*;

/// The folder of the system's libraries as an interface path without a trailing separator.
CString SystemFolder();

/// Loads the library behind a Windows module path: "FOLDER\name.dll" is looked for as
/// "FOLDER/libname.so". A path without a folder is refused, so that nothing is searched for
/// elsewhere. Null when it is absent or does not load.
ModuleHandle LoadModule(const CString& path);
/// The address of an entry point, or null.
void* ModuleEntry(ModuleHandle module, const char* name);
/// Undoes one LoadModule; does nothing for a module that is not loaded.
void FreeModule(ModuleHandle module);

} // namespace nqp2::platform
