// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A path, and patterns behind it.

#include "fuzz/fuzz_target.h"
#include "offload/mhl/ignore.h"

namespace nqp2::fuzz {
namespace {

using mhl::IgnoreList;

/// A pattern that means just that path.
std::string Escaped(std::string_view path) {
    std::string pattern = "/";
    for (const char each : path) {
        const bool isSpecial = each != '/' && static_cast<signed char>(each) >= 0;
        pattern.append(isSpecial ? 1 : 0, '\\').append(1, each);
    }
    return pattern;
}

/// Of a path as a walk over folders makes it.
bool IsPath(std::string_view path) {
    return !path.empty() && !path.starts_with('/') && !path.ends_with('/') &&
           path.find("//") == std::string_view::npos;
}

} // namespace

void TestInput(Input input) {
    constexpr std::size_t kLongestPath = 500;
    std::string path;
    IgnoreList list;
    ForEachDocument(input, [&](std::string_view text) {
        if (path.empty()) {
            path = text.substr(0, kLongestPath);
            return;
        }
        const bool isAdded = list.Add(text);
        if (!isAdded || text.starts_with('!')) {
            return;
        }
        IgnoreList undone = list;
        if (undone.Add("!" + std::string(text)) && !text.starts_with('#')) {
            IgnoreList alone;
            alone.Add(text);
            Require(!alone.IsIgnoredItself(path, true) || !undone.IsIgnoredItself(path, true) ||
                        undone.Patterns().size() == list.Patterns().size(),
                    "the last pattern that fits decides");
        }
    });
    if (!IsPath(path)) {
        return;
    }
    Require(!list.IsIgnoredItself(path, false) || list.IsIgnored(path, false),
            "what is above only adds");
    IgnoreList exact;
    if (exact.Add(Escaped(path))) {
        Require(exact.IsIgnoredItself(path, false), "an escaped path fits itself");
        Require(!exact.IsIgnoredItself(path + "x", false), "and no other");
    }
}

} // namespace nqp2::fuzz
