// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/OleDateTime.h"

#include <ctime>
#include <optional>

namespace nqp2::media {

/// A file's time as local date text, 2026-11-21T08:05:09; "Unknow" (sic: hosts compare it) when
/// there is none.
CString FileDateText(std::optional<std::time_t> time);

/// The same moment as a local date-time value; of status `invalid` when there is none.
COleDateTime FileMoment(std::optional<std::time_t> time);

} // namespace nqp2::media
