// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"

namespace nqp2::catalogue {

extern const Dialect kSqliteDialect;

} // namespace nqp2::catalogue
