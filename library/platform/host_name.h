// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace nqp2::platform {

/// What this machine is called; "" when the system does not tell.
std::string HostName();

} // namespace nqp2::platform
