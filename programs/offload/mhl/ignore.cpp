// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/ignore.h"

#include <algorithm>

namespace nqp2::mhl {
namespace {

// Those without any slash mean the same to every reader.
constexpr std::string_view kDefaults[] = {
    ".DS_Store",    "ascmhl",          "ascmhl/",
    ".Trashes",     ".Trash-*",        ".fseventsd",
    "$RECYCLE.BIN", ".Spotlight-V100", "System Volume Information",
    "lost+found",
};

/// Blanks at the end do not count, unless there is a backslash before.
std::string_view WithoutBlanks(std::string_view line) {
    while (line.ends_with(' ') && !line.ends_with("\\ ")) {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

IgnoreList IgnoreList::Default() {
    IgnoreList list;
    for (const std::string_view each : kDefaults) {
        list.Add(each);
    }
    return list;
}

bool IgnoreList::Add(std::string_view pattern) {
    if (std::find(m_texts.begin(), m_texts.end(), pattern) != m_texts.end()) {
        return true;
    }
    if (m_texts.size() == kMaxPatterns || pattern.size() > kMaxPatternBytes) {
        return false;
    }
    m_texts.emplace_back(pattern);
    std::string_view line = WithoutBlanks(pattern);
    const bool isNegated = line.starts_with('!');
    const bool isComment = line.starts_with('#');
    line.remove_prefix(isNegated ? 1 : 0);
    const bool isForFolders = line.ends_with('/');
    line.remove_suffix(isForFolders ? 1 : 0);
    if (!line.empty() && !isComment) {
        m_patterns.push_back({PathPattern(line), isNegated, isForFolders});
    }
    return true;
}

bool IgnoreList::IsIgnoredItself(std::string_view path, bool isFolder) const {
    const std::vector<std::string_view> parts = PartsOf(path);
    const auto fits = [&](const Pattern& each) {
        return (isFolder || !each.isForFolders) && each.path.Fits(parts);
    };
    const auto last = std::find_if(m_patterns.rbegin(), m_patterns.rend(), fits);
    return last != m_patterns.rend() && !last->isNegated;
}

bool IgnoreList::IsIgnored(std::string_view path, bool isFolder) const {
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/', slash + 1)) {
        if (IsIgnoredItself(path.substr(0, slash), true)) {
            return true;
        }
    }
    return IsIgnoredItself(path, isFolder);
}

} // namespace nqp2::mhl
