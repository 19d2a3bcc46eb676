// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/ignore.h"

#include <gtest/gtest.h>

namespace nqp2::mhl {
namespace {

struct IgnoreCase {
    std::vector<std::string> patterns;
    std::vector<std::string> ignored; ///< folders end in a slash
    std::vector<std::string> kept;
};

const IgnoreCase kPatterns[] = {
    {{"ascmhl", ".DS_Store"},
     {"ascmhl/", "a/ascmhl", "a/b/.DS_Store", "ascmhl/x/y"},
     {"Ascmhl", "a.DS_Store", "ascmhl2"}},
    {{"X/"}, {"X/", "a/X/", "X/file", "a/X/b/c"}, {"X", "a/X"}},
    {{"/top"}, {"top", "top/", "top/x"}, {"a/top"}},
    {{"a/b"}, {"a/b", "a/b/c"}, {"x/a/b"}},
    {{"a/b/"}, {"a/b/", "a/b/c"}, {"a/b", "x/a/b/"}},
    {{"*.tmp"}, {"x.tmp", "a/.tmp", "a/b.c.tmp"}, {"x.tmp2", "tmp"}},
    {{"a*b*c"}, {"abc", "aXbYc", "abbcc", "aabbcbc"}, {"ab", "acb", "a/b/c", "abcd"}},
    {{"a/*/c"}, {"a/b/c"}, {"a/c", "a/b/b/c"}},
    {{"**/c"}, {"c", "a/c", "a/b/c"}, {"a/cc"}},
    {{"a/**"}, {"a/b", "a/b/c"}, {"a/", "a", "b/a"}},
    {{"a/**/z"}, {"a/z", "a/b/z", "a/b/c/z"}, {"z", "b/a/z", "az"}},
    {{"**/a/**/b/**/c"}, {"a/b/c", "x/a/y/b/z/c", "a/a/b/a/c"}, {"a/c/b", "b/a/c"}},
    {{"?.x"}, {"a.x", "\xC3\xA9.x"}, {".x", "ab.x", "a/.x"}},
    {{"[a-c]1", "[!x]2", "[]x]3", "[[:digit:]_]4"},
     {"a1", "c1", "a2", "]3", "x3", "74", "_4"},
     {"d1", "x2", "a3", "a4", "[:4"}},
    {{"[abc", "a\\"}, {}, {"a", "[abc", "a\\"}},
    {{"\\!x", "\\#y", "#z", "a\\*b", ""}, {"!x", "#y", "a*b"}, {"x", "y", "#z", "aXb"}},
    {{"blank  ", "kept\\ "}, {"blank", "kept "}, {"blank  ", "kept"}},
    {{"*.mxf", "!keep.mxf", "dir/", "!dir/in"},
     {"a.mxf", "dir/", "dir/in"},
     {"keep.mxf", "a/keep.mxf"}},
    {{"!a", "a"}, {"a"}, {}},
    {{"\xC3\xA9"}, {"\xC3\xA9"}, {"e\xCC\x81"}},
    {{"\xFF?"}, {"\xFF\xFE"}, {"\xFE\xFF"}},
};

TEST(Ignore, LinesMeanWhatTheyMeanInAGitignore) {
    for (const IgnoreCase& each : kPatterns) {
        IgnoreList list;
        for (const std::string& pattern : each.patterns) {
            EXPECT_TRUE(list.Add(pattern));
        }
        const auto isIgnored = [&](const std::string& path) {
            const bool isFolder = path.ends_with('/');
            return list.IsIgnored(path.substr(0, path.size() - (isFolder ? 1 : 0)), isFolder);
        };
        for (const std::string& path : each.ignored) {
            EXPECT_TRUE(isIgnored(path)) << each.patterns.front() << " " << path;
        }
        for (const std::string& path : each.kept) {
            EXPECT_FALSE(isIgnored(path)) << each.patterns.front() << " " << path;
        }
    }
}

TEST(Ignore, NoPatternKeepsItBusy) {
    IgnoreList list;
    std::string stars;
    std::string folders;
    for (int i = 0; i < 300; ++i) {
        stars += "a*";
        folders += "**/a*/";
    }
    ASSERT_TRUE(list.Add(stars + "b"));
    ASSERT_TRUE(list.Add(folders.substr(0, kMaxPatternBytes - 6) + "/b"));
    std::string path;
    for (int i = 0; i < 200; ++i) {
        path += std::string(100, 'a') + "/";
    }
    EXPECT_FALSE(list.IsIgnoredItself(path + std::string(4000, 'a'), false));
    EXPECT_FALSE(list.Add(std::string(kMaxPatternBytes + 1, 'a')));
}

TEST(Ignore, EveryHistoryLeavesItselfOut) {
    const IgnoreList list = IgnoreList::Default();
    EXPECT_EQ(std::vector(list.Patterns().begin(), list.Patterns().begin() + 3),
              (std::vector<std::string>{".DS_Store", "ascmhl", "ascmhl/"}));
    EXPECT_TRUE(list.IsIgnored("A/ascmhl/ascmhl_chain.xml", false));
}

} // namespace
} // namespace nqp2::mhl
