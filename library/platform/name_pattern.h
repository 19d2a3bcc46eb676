// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

namespace nqp2::platform {

/// Whether a name fits a pattern of "*" and "?", without regard to letter case.
bool MatchesPattern(std::wstring_view name, std::wstring_view pattern);

} // namespace nqp2::platform
