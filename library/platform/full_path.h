// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

namespace nqp2::platform {

/// The same file or folder as an interface path that another process understands, whatever its
/// current folder is. Drive letters stay; so does a path that leads nowhere.
CString FullPath(const CString& path);

} // namespace nqp2::platform
