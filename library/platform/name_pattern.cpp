// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/name_pattern.h"

#include "platform/case_fold.h"

#include <cstddef>

namespace nqp2::platform {

bool MatchesPattern(std::wstring_view name, std::wstring_view pattern) {
    if (pattern == L"*.*") {
        return true; // kept: hosts rely on it, names without a dot included
    }
    constexpr std::size_t kNone = std::wstring_view::npos;
    std::size_t n = 0;
    std::size_t p = 0;
    std::size_t star = kNone; // the last "*" seen
    std::size_t resumeAt = 0; // where the name goes on when that "*" takes one more element
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == L'*') {
            star = p++;
            resumeAt = n;
        } else if (p < pattern.size() &&
                   (pattern[p] == L'?' || ToUpper(pattern[p]) == ToUpper(name[n]))) {
            ++n;
            ++p;
        } else if (star != kNone) {
            p = star + 1;
            n = ++resumeAt;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(L'*', p) == kNone;
}

} // namespace nqp2::platform
