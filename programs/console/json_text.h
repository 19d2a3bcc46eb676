// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string_view>

namespace nqp2::tool {

class OutputText;

/// Puts what stands between the quotes of a JSON string: quotes, backslashes and all that a
/// terminal might obey are escaped, what is no UTF-8 becomes U+FFFD, once for each part of a
/// character.
void PutEscaped(OutputText& out, std::string_view text);

} // namespace nqp2::tool
