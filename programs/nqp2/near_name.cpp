// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/near_name.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <utility>

namespace nqp2::tool {
namespace {

constexpr std::size_t kLongest = 64; ///< a longer word is no slip of the keys

bool IsSame(char one, char other) {
    return std::toupper(static_cast<unsigned char>(one)) ==
           std::toupper(static_cast<unsigned char>(other));
}

/// Characters to add, to remove, to replace or to swap with the next, until one is the other.
std::size_t Distance(const std::string& one, const std::string& other) {
    std::vector<std::size_t> last;
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= one.size(); ++i) {
        std::vector<std::size_t> next(row.size(), i);
        for (std::size_t j = 1; j < row.size(); ++j) {
            const std::size_t change = IsSame(one[i - 1], other[j - 1]) ? 0 : 1;
            next[j] = std::min({row[j] + 1, next[j - 1] + 1, row[j - 1] + change});
            if (i > 1 && j > 1 && IsSame(one[i - 1], other[j - 2]) &&
                IsSame(one[i - 2], other[j - 1])) {
                next[j] = std::min(next[j], last[j - 2] + 1);
            }
        }
        last = std::exchange(row, std::move(next));
    }
    return row.back();
}

} // namespace

std::string NearName(const std::string& word, const std::vector<std::string>& names) {
    std::string nearest;
    std::size_t least = word.size() > kLongest ? 0 : std::max<std::size_t>(word.size() / 3, 1) + 1;
    for (const std::string& name : names) {
        const std::size_t distance = name.size() > kLongest ? least : Distance(word, name);
        if (distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest;
}

} // namespace nqp2::tool
