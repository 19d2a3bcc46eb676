// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace nqp2::tool {

/// The name that somebody who typed `word` may have meant, in any letter case: the one that takes
/// the fewest keys to mend it, at most a third of the word. "" when there is none.
std::string NearName(const std::string& word, const std::vector<std::string>& names);

} // namespace nqp2::tool
