// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/reel_names.h"

#include <cstddef>

namespace nqp2::timeline {

std::string ReelNames::Fresh(const std::string& name) {
    constexpr std::size_t kLongest = 8;
    std::string stem;
    for (const char ch : name) {
        const char upper = ch >= 'a' && ch <= 'z' ? static_cast<char>(ch - 'a' + 'A') : ch;
        const bool isPlain = (upper >= 'A' && upper <= 'Z') || (upper >= '0' && upper <= '9');
        if (isPlain && stem.size() < kLongest) {
            stem += upper;
        }
    }
    stem = stem.empty() ? "CLIP" : stem;
    std::string reel = stem;
    for (int number = m_tries.try_emplace(stem, 0).first->second;; ++number) {
        const std::string digits = number == 0 ? "" : std::to_string(number + 1);
        reel = stem.substr(0, kLongest - digits.size()) + digits;
        if (m_taken.insert(reel).second) {
            m_tries[stem] = number + 1;
            return reel;
        }
    }
}

} // namespace nqp2::timeline
