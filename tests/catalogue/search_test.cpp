// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_writer.h"
#include "catalogue/schema.h"
#include "catalogue/search.h"
#include "catalogue/sqlite/sqlite_connection.h"
#include "catalogue/words.h"
#include "tests/support/temp_folder.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace nqp2::catalogue {
namespace {

std::vector<std::string> Names(const std::vector<FoundClip>& clips) {
    std::vector<std::string> names;
    for (const FoundClip& each : clips) {
        names.push_back(each.clip.name);
    }
    return names;
}

/// Words by the index of words, or clip by clip in order: how many there are must not matter.
TEST(Search, FindsTheSameHoweverManyClipsHaveTheWords) {
    const char* const titles[] = {"one two three", "two one",     "one",     "twofold one",
                                  "three two one", "\u00d6l one", "one-two", "k\u00f6ln two three"};
    const test::TempFolder folder;
    const auto connection = OpenSqlite(folder.Path("c.sqlite"), false);
    BringUpToDate(*connection, "test");
    CardContents contents;
    contents.card.mediumKey = "m";
    for (const char* const title : titles) {
        CardClip& made = contents.read.emplace_back();
        made.clip.name = made.holding.name = "C" + std::to_string(contents.read.size());
        made.clip.identity = made.clip.name;
        made.clip.title = title;
        made.clip.start = "2009-05-0" + std::to_string(contents.read.size());
        made.clip.camera = contents.read.size() % 2 == 0 ? "CAM-17" : "CAM-1";
        made.clip.words = WordsOfClip(made.clip);
    }
    CardWriter(*connection, contents, {}).Write();
    std::size_t found = 0;
    for (const char* const words : {"one", "two", "\"one two\"", "\"two one\"", "tw*",
                                    "\"one tw\"*", "one -two", "one -\"two one\"", "one -tw*",
                                    "\u00f6l", "fold", "c*", "o", "three two one", "K\u00d6LN"}) {
        for (const char* const camera : {"", "cam-1", "cam-17", "am"}) {
            for (const char* const sort : {"newest", "oldest", "name"}) {
                SearchOptions options;
                options.words = words;
                options.camera = camera;
                options.sort = sort;
                const std::vector<std::string> few = Names(Search(*connection, options));
                options.few = 0;
                EXPECT_EQ(Names(Search(*connection, options)), few) << words << ' ' << camera;
                found += few.size();
            }
        }
    }
    EXPECT_GT(found, 100U);
}

} // namespace
} // namespace nqp2::catalogue
