// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"

#include <cstdint>

namespace nqp2::tool {

/// A date in the form of IsoDate, that many seconds later in the same zone; "" for any other text.
CString LaterDate(const CString& date, std::int64_t seconds);

} // namespace nqp2::tool
