// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// What a target cannot hold is told before anything is written.

#include "tests/offload/run_fixture.h"

#include <functional>

namespace nqp2::test {
namespace {

using testing::HasSubstr;

offload::Plan PlanOf(const RunFixture& run) {
    return offload::MakePlan(run.arguments, [] { return true; });
}

std::string WhyNot(const RunFixture& run) {
    try {
        PlanOf(run);
        return "";
    } catch (const tool::Failure& failure) {
        return failure.what();
    }
}

void SetMediumOfTwo(RunFixture& run, const std::function<void(platform::MediumFacts&)>& change) {
    run.files.SetMedium([&run, change](const std::string& path, platform::MediumFacts& facts) {
        if (path.starts_with(run.folder.Path("two"))) {
            change(facts);
        }
    });
}

TEST(Plan, RefusesWhatATargetCannotHold) {
    const struct {
        const char* name;
        std::function<void(RunFixture&)> arrange;
        const char* words; ///< null: it can
    } cases[] = {
        {"nothing", [](RunFixture&) {}, nullptr},
        {"a full disk", [](RunFixture& run) { run.files.SetFreeSpace(3'000'000); },
         "too little free space"},
        {"a disk for one copy that is to take two",
         [](RunFixture& run) { run.files.SetFreeSpace(10'000'000); }, "too little free space"},
        {"a disk for two copies", [](RunFixture& run) { run.files.SetFreeSpace(20'000'000); },
         nullptr},
        {"a file too large",
         [](RunFixture& run) {
             SetMediumOfTwo(run, [](auto& medium) { medium.largestFile = 2'999'999; });
         },
         "no file as large"},
        {"the largest file",
         [](RunFixture& run) {
             SetMediumOfTwo(run, [](auto& medium) { medium.largestFile = 3'000'000; });
         },
         nullptr},
        {"a read-only disk",
         [](RunFixture& run) {
             SetMediumOfTwo(run, [](auto& medium) { medium.isReadOnly = true; });
         },
         "read-only"},
        {"names that may fall together",
         [](RunFixture& run) {
             run.folder.Write("card/lastclip.txt");
             run.files.Fail({.operation = Operation::Other,
                             .pathPart = run.folder.Path("two"),
                             .skip = 2}); // which open the folder and ask for its medium
         },
         "LASTCLIP.TXT and lastclip.txt"},
        {"names that differ in case",
         [](RunFixture& run) { run.folder.Write("card/lastclip.txt"); }, nullptr},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        RunFixture run;
        each.arrange(run);
        const std::string why = WhyNot(run);
        EXPECT_EQ(why.empty(), each.words == nullptr) << why;
        EXPECT_THAT(why, HasSubstr(each.words != nullptr ? each.words : ""));
        for (const char* const target : {"one", "two"}) {
            EXPECT_TRUE(std::filesystem::is_empty(run.folder.Path(target)));
        }
    }
}

TEST(Plan, KeepsItsPlacesFromOtherRuns) {
    const RunFixture run;
    {
        const offload::Plan first = PlanOf(run);
        EXPECT_THAT(WhyNot(run), HasSubstr("by another run"));
    }
    EXPECT_EQ(WhyNot(run), "");
}

/// Of a card with what a walk tells about it: the same wherever it is mounted, another for another.
TEST(Identity, TellsCardsApartAndStatesOfOne) {
    RunFixture run;
    const offload::CardIdentity card = PlanOf(run).identity;
    EXPECT_TRUE(card.IsSame(PlanOf(run).identity));
    const std::string file = run.folder.Path("card/LASTCLIP.TXT");
    const auto time = std::filesystem::last_write_time(file);
    const struct {
        const char* name;
        std::chrono::seconds shift;
        bool isSame;
    } shifts[] = {{"an hour, as zones shift the times of FAT", std::chrono::hours(1), true},
                  {"a quarter of an hour", std::chrono::minutes(15), true},
                  {"a minute", std::chrono::minutes(1), false}};
    for (const auto& each : shifts) {
        SCOPED_TRACE(each.name);
        std::filesystem::last_write_time(file, time + each.shift);
        EXPECT_EQ(card.IsSame(PlanOf(run).identity), each.isSame);
    }
    const std::vector<std::string> lists = {"ascmhl/0001_\"A.mhl", "B/ascmhl/0002.mhl"};
    const auto read = offload::MarkInText(offload::MarkText({card, lists}));
    EXPECT_TRUE(card.IsSame(read.identity));
    EXPECT_EQ(read.lists, lists);
    EXPECT_TRUE(card.IsSame(offload::IdentityIn(offload::EntriesOf(card))));
    for (const char* const broken : {"", "[", "{}", "{\"cardFiles\":1}", "null"}) {
        EXPECT_FALSE(card.IsSame(offload::MarkInText(broken).identity));
    }
}

} // namespace
} // namespace nqp2::test
