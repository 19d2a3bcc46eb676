// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/place.h"

#include <cstdint>

namespace nqp2::clips {

/// The first of the 68 candidate names, from 0001AA on, whose video file is not on the card with
/// that contents folder. Returns false, with `name` untouched, when all are taken or the folder
/// cannot be read. `tried` receives how many were looked at.
bool FindFreeName(const platform::Place& contents, CString& name, std::int64_t& tried);

} // namespace nqp2::clips
