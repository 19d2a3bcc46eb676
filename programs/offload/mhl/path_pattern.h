// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// A path with "*", "?", "[...]" and "\" in its names, and "**" for any number of folders. "?" is
/// one character of UTF-8. No path keeps it busy: it looks at each place with each part at most
/// once for every place to begin at.
class PathPattern {
public:
    /// One without a slash fits in any folder, but for one at its end, which is to be taken away
    /// before.
    explicit PathPattern(std::string_view text);

    [[nodiscard]] bool Fits(const std::vector<std::string_view>& path) const;

private:
    std::vector<std::string> m_parts;
};

/// The names of a path.
std::vector<std::string_view> PartsOf(std::string_view path);

} // namespace nqp2::mhl
