// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/path_pattern.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

inline constexpr std::size_t kMaxPatternBytes = 1024;
inline constexpr std::size_t kMaxPatterns = 256;

/// Patterns as the lines of a .gitignore: what they fit is not copied or hashed. The last one that
/// fits decides; what lies in an ignored folder is ignored. A question takes time in proportion to
/// the patterns' length times the path's.
class IgnoreList {
public:
    /// The patterns that every history has: a desktop's litter and the history itself.
    static IgnoreList Default();

    /// Adds a pattern that is not there yet. False when there are too many, or it is too long; it
    /// then counts for nothing.
    bool Add(std::string_view pattern);
    /// As they were added.
    [[nodiscard]] const std::vector<std::string>& Patterns() const { return m_texts; }

    /// Whether a path below the scope ("A/B"), or a folder above it, is ignored.
    [[nodiscard]] bool IsIgnored(std::string_view path, bool isFolder) const;
    /// The same for a walk that does not enter ignored folders: does not ask for those above.
    [[nodiscard]] bool IsIgnoredItself(std::string_view path, bool isFolder) const;

private:
    struct Pattern {
        PathPattern path;
        bool isNegated = false;
        bool isForFolders = false;
    };

    std::vector<std::string> m_texts;
    std::vector<Pattern> m_patterns;
};

} // namespace nqp2::mhl
