// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <string>

namespace nqp2::tool {

/// The POSIX path under which the file of an interface path really stands; "" for "".
std::string RealPath(const CString& path);

} // namespace nqp2::tool
