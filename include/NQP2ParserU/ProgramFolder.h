// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Export.h"

#include <string>

namespace nqp2 {

/// The folder of the running program's file, links resolved, without a trailing separator; "" when
/// the system does not tell.
NQP2_API std::string ProgramFolder();

} // namespace nqp2
