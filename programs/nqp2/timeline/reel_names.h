// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <set>
#include <string>

namespace nqp2::timeline {

/// Gives clips names of tapes: each its own, at most eight of A to Z and 0 to 9.
class ReelNames {
public:
    std::string Fresh(const std::string& name);

private:
    std::set<std::string> m_taken = {"AX", "BARS", "BL", "BLACK"}; ///< these mean no tape
    std::map<std::string, int> m_tries;                            ///< by the beginnings of names
};

} // namespace nqp2::timeline
