// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

namespace nqp2::platform {

/// What counts as white space around texts and before numbers, in every locale.
inline constexpr std::wstring_view kWhiteSpace = L" \t\n\v\f\r";

} // namespace nqp2::platform
