// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Guid.h"

#include <optional>
#include <string>
#include <string_view>

namespace nqp2::tool {

/// 8-4-4-4-12 digits in lower case.
std::string GuidText(const GUID& guid);

/// The GUID behind 8-4-4-4-12 or 32 hexadecimal digits; nothing for any other text.
std::optional<GUID> GuidFromForm(std::string_view text);

} // namespace nqp2::tool
