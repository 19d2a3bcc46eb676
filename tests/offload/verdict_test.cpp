// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Each way in which a card could wrongly be called safe to format.

#include "tests/offload/run_fixture.h"
#include "tests/support/small_medium.h"

#include <atomic>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <thread>

namespace nqp2::test {
namespace {

using offload::Outcome;
using platform::IoError;
using testing::HasSubstr;

constexpr const char* kVideo = "card/CONTENTS/VIDEO/0001AB.MXF";

/// Does something when a file of the card is opened for the second reading.
void AtSecondReading(RunFixture& run, const std::function<void()>& act) {
    const auto opened = std::make_shared<int>(0);
    run.files.SetHook([opened, act](Operation operation, const std::string& path) {
        if (operation == Operation::Open && path.ends_with(kVideo) && ++*opened == 2) {
            act();
        }
    });
}

/// As when a medium gives other bytes than before.
void ChangeVideo(const RunFixture& run) {
    const std::string path = run.folder.Path(kVideo);
    const auto time = std::filesystem::last_write_time(path);
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary) << 'x';
    std::filesystem::last_write_time(path, time);
}

void AtFirstWrite(RunFixture& run, const std::string& target, const std::function<void()>& act) {
    const auto isDone = std::make_shared<bool>(false);
    run.files.SetHook([=](Operation operation, const std::string& path) {
        if (operation == Operation::WriteAt && path.starts_with(target) && !*isDone) {
            *isDone = true;
            act();
        }
    });
}

/// Does something when a file of target two whose name ends so is touched.
void AtFirst(RunFixture& run, const std::string& ending, const std::function<void()>& act) {
    const auto isDone = std::make_shared<std::atomic<bool>>(false);
    const std::string target = run.folder.Path("two/A001");
    run.files.SetHook([=](Operation /*operation*/, const std::string& path) {
        if (path.starts_with(target) && path.ends_with(ending) && !isDone->exchange(true)) {
            act();
        }
    });
}

/// As when a medium is pulled: an empty folder has the copy's name.
void MoveAway(const RunFixture& run, const std::string& folder) {
    std::filesystem::rename(run.folder.Path(folder), run.folder.Path("gone"));
    run.folder.MakeFolder("two/A001");
}

void Fail(RunFixture& run, Operation operation, const std::string& part, std::uint64_t skip = 0) {
    run.files.Fail({.operation = operation, .pathPart = part, .skip = skip});
}

/// A list of the card's own that tells other bytes of a file than it has.
void SealThenChange(RunFixture& run) {
    tool::RunProgress progress(tool::ProgressForm::None);
    offload::Inspection card(run.arguments.card);
    offload::Inspect(card, {}, progress);
    std::vector<mhl::AddedGeneration> added;
    mhl::ManifestHead head;
    head.process = mhl::Process::InPlace;
    ASSERT_TRUE(card.history.AddGeneration(head, card.index.tree, added));
    run.folder.Write("card/LASTCLIP.TXT", "0001AC\n");
}

struct Danger {
    const char* name;
    std::function<void(RunFixture&)> arrange;
    const char* missing; ///< in the verdict; null: the card is safe
};

const Danger kDangers[] = {
    {"none", [](RunFixture&) {}, nullptr},
    {"one copy alone", [](RunFixture& run) { run.arguments.targets.pop_back(); }, "1 proven copy"},
    {"one disk", [](RunFixture& run) { run.diskOfTwo = run.diskOfOne; }, "1 proven copy"},
    {"an unknown disk", [](RunFixture& run) { run.diskOfTwo = ""; }, "nothing is known"},
    {"two unknown disks", [](RunFixture& run) { run.diskOfOne = run.diskOfTwo = ""; },
     "1 proven copy"},
    {"the card's own disk", [](RunFixture& run) { run.diskOfTwo = "8:32"; }, "card's own medium"},
    {"an unknown disk of the card", [](RunFixture& run) { run.diskOfCard = ""; },
     "cannot be told from the card's medium"},
    {"a folder of the card's own share",
     [](RunFixture& run) {
         run.diskOfCard = "nas:/vol";
         run.diskOfTwo = "nas:/vol/below";
     },
     "card's own medium"},
    {"read once", [](RunFixture& run) { run.arguments.noVerifySource = true; }, "second time"},
    {"a link",
     [](RunFixture& run) {
         std::filesystem::create_symlink("LASTCLIP.TXT", run.folder.Path("card/link"));
     },
     "1 entries of the card were left out"},
    {"a pipe", [](RunFixture& run) { mkfifo(run.folder.Path("card/pipe").c_str(), 0600); },
     "left out"},
    {"a name that no list holds", [](RunFixture& run) { run.folder.Write("card/\xFF.MXF"); },
     "left out"},
    {"a file among no lists",
     [](RunFixture& run) { run.folder.Write("card/ascmhl/CLIP.MXF", "bytes"); },
     "1 entries of the card were left out"},
    {"a file, a hidden one, a link and a folder among lists",
     [](RunFixture& run) {
         SealThenChange(run);
         run.folder.Write("card/LASTCLIP.TXT", "0001AB\n");
         run.folder.Write("card/ascmhl/CLIP.MXF", "bytes");
         run.folder.Write("card/ascmhl/.CLIP.mhl", "bytes");
         run.folder.Write("card/ascmhl/sub/CLIP.MXF", "bytes");
         std::filesystem::create_symlink("CLIP.MXF", run.folder.Path("card/ascmhl/link.mhl"));
     },
     "4 entries of the card were left out"},
    {"what a killed writer left",
     [](RunFixture& run) { run.folder.Write("card/.nqp2-0123456789abcdef0123456789abcdef.part"); },
     "left out"},
    {"a file that cannot be read", [](RunFixture& run) { Fail(run, Operation::ReadBlock, kVideo); },
     "could not be read"},
    {"a folder that cannot be read",
     [](RunFixture& run) { Fail(run, Operation::List, "card/CONTENTS/AUDIO"); },
     "could not be read"},
    {"a file that cannot be read again",
     [](RunFixture& run) { Fail(run, Operation::Open, kVideo, 1); }, "did not agree"},
    {"a file that reads otherwise the second time",
     [](RunFixture& run) { AtSecondReading(run, [&run] { ChangeVideo(run); }); }, "did not agree"},
    {"a file that comes meanwhile",
     [](RunFixture& run) {
         AtSecondReading(run, [&run] { run.folder.Write("card/CONTENTS/CLIP/0002AB.XML"); });
     },
     "stayed as it was"},
    {"a file that goes meanwhile",
     [](RunFixture& run) {
         AtSecondReading(run,
                         [&run] { std::filesystem::remove(run.folder.Path("card/LASTCLIP.TXT")); });
     },
     "stayed as it was"},
    {"a part of a card",
     [](RunFixture& run) { run.arguments.card = run.folder.Path("card/CONTENTS"); },
     "only a part of the card"},
    {"an unfinished copy as the card",
     [](RunFixture& run) { run.folder.Write("card/ascmhl/.nqp2-offload.json", "{}"); }, "own list"},
    {"against the card's own list", SealThenChange, "own list"},
    {"a broken list of the card's own",
     [](RunFixture& run) {
         SealThenChange(run);
         run.folder.Write("card/ascmhl/ascmhl_chain.xml", "<");
     },
     "own list"},
    {"patterns of the card's own list",
     [](RunFixture& run) {
         SealThenChange(run);
         run.folder.Write("card/LASTCLIP.TXT", "0001AB\n");
         mhl::History history = mhl::History::Open(run.files, run.arguments.card);
         ASSERT_TRUE(history.Ignore("LASTCLIP.TXT"));
         mhl::ManifestHead head;
         head.process = mhl::Process::InPlace;
         std::vector<mhl::AddedGeneration> added;
         mhl::Tree tree;
         ASSERT_TRUE(history.AddGeneration(head, tree, added));
     },
     "left out"},
    {"a write that fails", [](RunFixture& run) { Fail(run, Operation::WriteAt, "two/A001/C"); },
     "does not hold all"},
    {"a reading back that fails",
     [](RunFixture& run) { Fail(run, Operation::ReadAt, "two/A001/C"); }, "does not hold all"},
    {"a chain that cannot be written",
     [](RunFixture& run) { Fail(run, Operation::Other, "two/A001/ascmhl/ascmhl_chain.xml"); },
     "has no finished list"},
    {"a folder of a copy that goes meanwhile",
     [](RunFixture& run) {
         AtSecondReading(
             run, [&run] { std::filesystem::remove_all(run.folder.Path("two/A001/CONTENTS")); });
     },
     "does not hold all"},
    {"a copy that is moved away meanwhile",
     [](RunFixture& run) { AtSecondReading(run, [&run] { MoveAway(run, "two/A001"); }); },
     "does not hold all"},
    {"a copy that is moved away while its list is written",
     [](RunFixture& run) { AtFirst(run, ".mhl", [&run] { MoveAway(run, "two/A001"); }); },
     "does not hold all"},
    {"a copy that is moved away while the card's list is copied",
     [](RunFixture& run) {
         SealThenChange(run);
         run.folder.Write("card/LASTCLIP.TXT", "0001AB\n");
         AtFirst(run, ".mhl", [&run] { MoveAway(run, "two/A001"); });
     },
     "does not hold all"},
    {"names of a copy that its medium does not tell",
     [](RunFixture& run) {
         AtSecondReading(run, [&run] { Fail(run, Operation::List, "two/A001/CONTENTS/CLIP"); });
     },
     "does not hold all"},
    {"a file of a copy that is overwritten meanwhile",
     [](RunFixture& run) {
         AtSecondReading(run, [&run] { run.folder.Write("two/A001/LASTCLIP.TXT", "0001AC\n"); });
     },
     "does not hold all"},
    {"a file of a copy that goes while the list is written",
     [](RunFixture& run) {
         run.files.SetHook([&run](Operation operation, const std::string& path) {
             if (operation == Operation::Other && path.starts_with(run.folder.Path("two")) &&
                 path.ends_with("ascmhl_chain.xml")) {
                 std::filesystem::remove(run.folder.Path("two/A001/LASTCLIP.TXT"));
             }
         });
     },
     "does not hold all"},
    {"a medium that is pulled",
     [](RunFixture& run) {
         AtFirstWrite(run, run.folder.Path("two"), [&run] { MoveAway(run, "two"); });
     },
     "does not hold all"},
};

TEST(Verdict, IsNeverTooGood) {
    for (const Danger& danger : kDangers) {
        SCOPED_TRACE(danger.name);
        RunFixture run;
        danger.arrange(run);
        const offload::Verdict verdict = run.Run().verdict;
        EXPECT_EQ(verdict.isSafe, danger.missing == nullptr) << VerdictText(verdict);
        if (danger.missing != nullptr) {
            EXPECT_THAT(VerdictText(verdict), HasSubstr(danger.missing));
        }
        if (std::filesystem::exists(run.folder.Path("gone"))) {
            EXPECT_TRUE(std::filesystem::is_empty(run.folder.Path("two/A001")));
        }
    }
}

/// While targets are waited for the card is read again: that counts as much as afterwards.
TEST(Verdict, IsTheSameWhereTheCardIsReadAgainMeanwhile) {
    for (const bool isOther : {false, true}) {
        RunFixture run;
        std::atomic<int> opened = 0;
        run.files.SetHook([&](Operation operation, const std::string& path) {
            if (operation == Operation::Open && path.ends_with(kVideo) && ++opened == 2 &&
                isOther) {
                ChangeVideo(run);
            }
            for (int i = 0; i < 500 && operation == Operation::Commit && opened < 2; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            EXPECT_TRUE(operation != Operation::Commit || opened == 2);
        });
        const offload::Verdict verdict = run.Run(0).verdict;
        EXPECT_EQ(verdict.isSafe, !isOther);
        EXPECT_THAT(VerdictText(verdict), HasSubstr(isOther ? "did not agree" : "read twice"));
    }
}

TEST(Verdict, WhatAMountHidesIsNotCopied) {
    RunFixture run;
    WithMedium(run.folder.Path("card/CONTENTS/VOICE"), "1m",
               [&] { EXPECT_THAT(VerdictText(run.Run().verdict), HasSubstr("left out")); });
}

/// Whatever fails on one target: the other one is proven, and safe means that both are sound.
TEST(Verdict, HoldsWhateverFailsOnATarget) {
    std::uint64_t failed = 0;
    std::uint64_t safe = 0;
    for (std::uint64_t skip = 0;; skip += 3) {
        SCOPED_TRACE(skip);
        RunFixture run;
        std::uint64_t calls = 0;
        run.files.SetHook([&](Operation /*operation*/, const std::string& path) {
            calls += path.starts_with(run.folder.Path("two/")) ? 1U : 0U;
        });
        run.files.Fail({.pathPart = run.folder.Path("two/"), .skip = skip, .times = 1});
        try {
            const Outcome outcome = run.Run();
            run.files.HealAll();
            EXPECT_TRUE(IsProven(outcome.copies[0].proof));
            failed += IsProven(outcome.copies[1].proof) ? 0U : 1U;
            safe += outcome.verdict.isSafe ? 1U : 0U;
            EXPECT_TRUE(!outcome.verdict.isSafe || (run.IsSound("one") && run.IsSound("two")));
        } catch (const tool::Failure&) {
            // Refused before anything was written.
            EXPECT_TRUE(std::filesystem::is_empty(run.folder.Path("one")));
        }
        if (skip >= calls) {
            break;
        }
    }
    EXPECT_GT(failed, 10U);
    EXPECT_GE(safe, 1U);
}

/// The same for a second run, which finds what the first has left and what became of it.
TEST(Verdict, OfASecondRunRestsOnWhatIsThere) {
    constexpr struct {
        const char* name;
        const char* bytes; ///< of the same length; null: the file is gone
    } kLeft[] = {{"A001/LASTCLIP.TXT", "0001AC\n"}, {"A001/LASTCLIP.TXT", nullptr}};
    for (const auto& left : kLeft) {
        RunFixture run;
        EXPECT_TRUE(run.Run().verdict.isSafe);
        const std::string path = run.folder.Path(std::string("two/") + left.name);
        std::filesystem::remove(path);
        if (left.bytes != nullptr) {
            run.folder.Write(std::string("two/") + left.name, left.bytes);
        }
        const Outcome second = run.Run();
        EXPECT_TRUE(second.verdict.isSafe) << VerdictText(second.verdict);
        EXPECT_EQ(second.copies[1].wereThere, 3U);
        EXPECT_EQ(second.copies[1].copiedAnew, left.bytes != nullptr ? 1U : 0U);
        EXPECT_TRUE(run.IsSound("two"));
    }
}

/// Of a copy that lost its chain: no run takes away the lists that tell what it held.
TEST(Run, LeavesADamagedListAsItIs) {
    constexpr struct {
        bool isMarked;
        int runs;
        bool tellsLists; ///< in the mark
    } cases[] = {
        {false, 2, false}, {false, 1, false}, {true, 2, true}, {true, 1, true}, {true, 1, false}};
    for (const auto& [isMarked, runs, tellsLists] : cases) {
        SCOPED_TRACE(testing::Message() << isMarked << runs << tellsLists);
        RunFixture run;
        for (int i = 0; i < runs; ++i) {
            run.Run();
        }
        const std::string lists = run.folder.Path("two/A001/ascmhl/");
        std::filesystem::remove(lists + "ascmhl_chain.xml");
        if (isMarked) {
            auto plan = offload::MakePlan(run.arguments, [] { return true; });
            offload::UnfinishedMark mark{plan.identity};
            if (tellsLists) {
                mark.lists = offload::ManifestsIn(*plan.targets[1].opened, {"A001/ascmhl"});
                for (std::string& each : *mark.lists) {
                    each.erase(0, std::string_view("A001/").size());
                }
            }
            run.folder.Write("two/A001/ascmhl/.nqp2-offload.json", MarkText(mark));
        }
        for (int again = 0; again < 2; ++again) {
            const Outcome outcome = run.Run();
            EXPECT_THAT(outcome.copies[1].ended + outcome.copies[1].notSealed,
                        testing::AnyOf(HasSubstr("list has faults"), HasSubstr("not name all")));
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(lists), {}),
                      runs + (isMarked ? 1 : 0));
        }
    }
}

TEST(Run, GivesMediaTheirNamesFirstAndTheChainIsLast) {
    RunFixture run;
    run.arguments.targets.pop_back();
    std::vector<std::string> named;
    std::mutex mutex;
    run.files.SetHook([&](Operation operation, const std::string& path) {
        const std::lock_guard lock(mutex);
        if (operation == Operation::Commit || path.ends_with(".xml") ||
            (operation == Operation::RemoveFile && path.ends_with(".json"))) {
            named.push_back(path.substr(path.rfind('.')));
        }
    });
    ASSERT_TRUE(IsProven(run.Run().copies[0].proof));
    const auto last = [&](const char* ending) {
        return std::find(named.rbegin(), named.rend(), ending) - named.rbegin();
    };
    EXPECT_GT(last(".MXF"), std::find(named.rbegin(), named.rend(), ".XML") - named.rbegin());
    EXPECT_GT(last(".XML"), last(".mhl"));
    EXPECT_GT(last(".mhl"), last(".xml"));
    EXPECT_GT(last(".xml"), last(".json"));
}

/// Of a card that gives read errors in one file all the rest is copied.
TEST(Run, CopiesWhatCanBeRead) {
    for (const std::uint64_t skip : {0U, 1U}) {
        RunFixture run;
        Fail(run, Operation::ReadBlock, kVideo, skip);
        const Outcome outcome = run.Run();
        ASSERT_EQ(outcome.cannotRead.Count(), 1U);
        EXPECT_EQ(outcome.cannotRead.Kept().front().path, "CONTENTS/VIDEO/0001AB.MXF");
        EXPECT_EQ(offload::StatusOf(outcome, run.arguments), tool::kFailed);
        for (const offload::CopyOutcome& copy : outcome.copies) {
            EXPECT_EQ(copy.files, 3U);
            EXPECT_FALSE(copy.proof.isSealed);
        }
        EXPECT_FALSE(
            std::filesystem::exists(run.folder.Path("one/A001/CONTENTS/VIDEO/0001AB.MXF")));
        EXPECT_TRUE(std::filesystem::exists(run.folder.Path("one/A001/LASTCLIP.TXT")));
    }
}

/// One run of each target's failures ends that target alone; the status says what was asked for.
TEST(Run, StatusSaysWhetherAllWasDone) {
    RunFixture run;
    EXPECT_EQ(offload::StatusOf(run.Run(), run.arguments), tool::kDone);
    run.arguments.copies = 2;
    EXPECT_EQ(offload::StatusOf(run.Run(), run.arguments), tool::kDone);
    run.diskOfTwo = run.diskOfOne;
    EXPECT_EQ(offload::StatusOf(run.Run(), run.arguments), tool::kSkipped);
    run.arguments.copies = 0;
    run.folder.Write("card/\xFF.MXF");
    EXPECT_EQ(offload::StatusOf(run.Run(), run.arguments), tool::kFailed);
}

} // namespace
} // namespace nqp2::test
