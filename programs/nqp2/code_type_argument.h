// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CodeType.h"

#include <string>

namespace nqp2::tool {

/// The code type that the user named or numbered. Numbers without a name are taken: the card may
/// hold formats that have none. Throws Failure for any other text.
eCodeType CodeTypeFromArgument(const std::string& text);

} // namespace nqp2::tool
