// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

namespace nqp2::platform {

/// The outcome that an error number of the system (errno) stands for, with the system's words.
IoStatus SystemStatus(int errorNumber);

} // namespace nqp2::platform
