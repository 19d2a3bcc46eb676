// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/copy/fan_fixture.h"
#include "tests/support/small_medium.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

namespace nqp2::copy {
namespace {

using test::Operation;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

TEST_F(FanTest, EverythingArrivesEverywhereWhateverTheSizesOfBlocksAndBatches) {
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        name += byte == '/' ? '.' : static_cast<char>(byte);
    }
    m_source.Write("NAMES/" + name.substr(0, 128), "all bytes");
    m_source.Write("NAMES/" + name.substr(128), "that there are");
    MakeSource();
    for (const std::size_t targets : {0U, 1U, 2U, 5U}) {
        for (const FanSettings& settings :
             {SmallSettings(), FanSettings{},
              FanSettings{.block = 100, .mostInFlight = 1, .smallFile = 0, .batchFiles = 1},
              FanSettings{.block = 999, .smallFile = 100'000, .batchFiles = 1}}) {
            Clear();
            NotedReport report;
            KeepingTaker one;
            KeepingTaker other;
            EXPECT_EQ(Run(report, settings, targets, {&one, &other}), "");
            EXPECT_TRUE(one.files == m_content && other.files == m_content);
            for (std::size_t i = 0; i < targets; ++i) {
                ExpectComplete(i, report);
                EXPECT_THAT(report.arrived[i], Each(Pair(testing::_, Arrival::Copied)));
            }
            for (const auto& [path, digest] : report.read) {
                EXPECT_TRUE(digest == DigestOf(m_content.at(path))) << path;
            }
            EXPECT_EQ(report.read.size(), m_content.size());
        }
    }
    Clear();
    NotedReport report;
    EXPECT_EQ(Run(report), "");
    struct stat facts = {};
    EXPECT_EQ(stat((Root(0) + "/HOLES").c_str(), &facts), 0);
    EXPECT_LT(facts.st_blocks * 512, 60'000) << "runs of zeros take no room";
}

/// Each damage to a copy, and how the next run finds the file.
TEST_F(FanTest, WhatIsThereIsComparedAndSetAsideWhenItDiffers) {
    MakeSource();
    NotedReport first;
    ASSERT_EQ(Run(first), "");
    NotedReport second;
    {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        ASSERT_EQ(Run(second), "");
        EXPECT_EQ(files.Calls(Operation::Create), 0U);
    }
    EXPECT_THAT(second.arrived[1], Each(Pair(testing::_, Arrival::WasThere)));
    ExpectComplete(1, second);
    int copies = 0;
    for (const char* const name : {"CONTENTS/VIDEO/50000", "PRIVATE/4096", "PRIVATE/1"}) {
        const std::string whole = m_content.at(name);
        const std::string path = Root(1) + '/' + name;
        for (const std::size_t place : {std::size_t{0}, whole.size() / 2, whole.size() - 1}) {
            std::string damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ 1);
            for (const std::string& there : {damaged, whole + "x", whole.substr(0, place)}) {
                SCOPED_TRACE(std::string(name) + ' ' + std::to_string(there.size()));
                m_targets.Write(std::string("t1/CARD/") + name, there);
                NotedReport report;
                EXPECT_EQ(Run(report), "");
                EXPECT_EQ(report.arrived[1][name], Arrival::CopiedAnew);
                EXPECT_EQ(report.arrived[0][name], Arrival::WasThere);
                EXPECT_EQ(report.arrived[1].size(), m_content.size());
                const std::string& aside = report.aside[1][name];
                EXPECT_THAT(aside, HasSubstr(".differs-"));
                const Tree tree = Arrived(1);
                EXPECT_TRUE(tree.at(name) == whole);
                EXPECT_EQ(tree.at(std::filesystem::path(name).parent_path() / aside), there);
                EXPECT_EQ(tree.size(), m_content.size() + static_cast<std::size_t>(++copies));
            }
        }
    }
    // Another time of change alone is put right.
    std::filesystem::last_write_time(Root(0) + "/PRIVATE/1", std::chrono::file_clock::now());
    NotedReport last;
    EXPECT_EQ(Run(last), "");
    ExpectComplete(0, last);
}

/// A file that changes in any way while it is read or before: it alone is told.
TEST_F(FanTest, ASourceThatChangesIsToldAndDoesNotArrive) {
    MakeSource();
    struct Case {
        Operation when;
        std::function<void(const std::string&)> change;
    };
    const auto resize = [](std::size_t size) {
        return [size](const std::string& path) { std::filesystem::resize_file(path, size); };
    };
    const auto touch = [](const std::string& path) {
        std::filesystem::last_write_time(path, std::chrono::file_clock::now());
    };
    const auto remove = [](const std::string& path) { std::filesystem::remove(path); };
    const Case cases[] = {
        {Operation::Open, resize(3)},
        {Operation::Open, resize(90'000)},
        {Operation::Open, touch},
        {Operation::Open, remove},
        {Operation::Open,
         [](const std::string& path) {
             std::filesystem::remove(path);
             mkfifo(path.c_str(), 0600);
         }},
        {Operation::Open,
         [](const std::string& path) {
             std::filesystem::remove(path);
             std::filesystem::create_symlink("50000", path);
         }},
        {Operation::ReadBlock, resize(3)},
        {Operation::ReadBlock, resize(90'000)},
        {Operation::ReadBlock, touch},
    };
    for (const char* const name : {"/CONTENTS/VIDEO/8193", "/CONTENTS/VIDEO/4095"}) {
        for (const Case& each : cases) {
            Clear();
            const std::string path = m_source.Path() + name;
            test::FaultyFileSystem files;
            const platform::ScopedFileSystem use(files);
            files.SetHook([&](Operation operation, const std::string& used) {
                if (operation == each.when && used == path) {
                    files.SetHook({});
                    each.change(path);
                }
            });
            NotedReport report;
            KeepingTaker taker;
            EXPECT_EQ(Run(report, SmallSettings(), 2, {&taker}), "");
            EXPECT_EQ(report.unread.size(), 1U);
            EXPECT_THAT(report.unread.begin()->second, HasSubstr(path));
            EXPECT_EQ(report.arrived[0].size(), m_content.size() - 1);
            EXPECT_EQ(Arrived(1).size(), m_content.size() - 1);
            EXPECT_EQ(taker.files.size(), m_content.size() - 1);
            ExpectNothingHalf(report);
            std::filesystem::remove(path);
            m_source.Write(name + 1, m_content.at(name + 1));
            List();
        }
    }
}

/// A medium that gives back other bytes than were written, of files of each kind.
TEST_F(FanTest, WhatTheMediumGivesBackIsCompared) {
    MakeSource();
    for (const char* const name : {"50000", "4095"}) {
        Clear();
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        std::atomic<bool> isSpoilt = false;
        files.SetHook([&](Operation operation, const std::string& path) {
            if (operation != Operation::ReadAt || !path.ends_with(name) || isSpoilt ||
                !path.starts_with(Root(1))) {
                return;
            }
            const auto size = static_cast<std::uintmax_t>(std::atoi(name));
            const auto folder = std::filesystem::path(path).parent_path();
            for (const auto& entry : std::filesystem::directory_iterator(folder)) {
                if (entry.file_size() == size && entry.path().filename() != name) {
                    std::fstream file(entry.path(), std::ios::in | std::ios::out);
                    file.seekp(1000);
                    file.put(static_cast<char>(file.peek() + 1));
                    isSpoilt = true;
                }
            }
        });
        NotedReport report;
        EXPECT_EQ(Run(report), "");
        EXPECT_TRUE(isSpoilt);
        ASSERT_EQ(report.failed[1].size(), 1U);
        EXPECT_THAT(report.failed[1].begin()->second, HasSubstr("is not what was written"));
        EXPECT_EQ(report.arrived[1].size(), m_content.size() - 1);
        EXPECT_EQ(report.arrived[0].size(), m_content.size());
        ExpectNothingHalf(report);
    }
}

TEST_F(FanTest, WhatIsInTheWayStays) {
    MakeSource();
    m_targets.MakeFolder("t1/CARD/PRIVATE/1");
    m_targets.Write("t1/CARD/EMPTY", "a file in a folder's place");
    const test::TempFolder outside;
    std::filesystem::create_directory_symlink(outside.Path(), Root(1) + "/CONTENTS");
    std::filesystem::create_symlink("nowhere", Root(1) + "/LASTCLIP.TXT");
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetHook([&](Operation operation, const std::string& path) {
        // As where this name and another that differs in case are one: it is taken by now.
        if (operation == Operation::Commit && path == Root(1) + "/HOLES") {
            m_targets.Write("t1/CARD/HOLES", "of another name");
        }
    });
    NotedReport report;
    EXPECT_EQ(Run(report), "");
    EXPECT_THAT(report.failed[1]["PRIVATE/1"], HasSubstr("is in the way and is no file"));
    EXPECT_THAT(report.failed[1]["LASTCLIP.TXT"], HasSubstr("is in the way and is a link"));
    EXPECT_THAT(report.failed[1]["CONTENTS/VIDEO/1"], HasSubstr("is in the way and is a link"));
    EXPECT_THAT(report.failed[1]["EMPTY/BELOW"], HasSubstr("is in the way and is no file"));
    EXPECT_THAT(report.failed[1]["HOLES"], HasSubstr("File exists"));
    EXPECT_EQ(Arrived(1).at("HOLES"), "of another name");
    EXPECT_TRUE(std::filesystem::is_empty(outside.Path()));
    EXPECT_TRUE(report.ended.empty());
    ExpectComplete(0, report);
}

/// Limits of the target: each fails alone, in time.
TEST_F(FanTest, FullAndLimitedTargetsEndOrFailForThemselves) {
    MakeSource();
    for (const auto error : {platform::IoError::NoSpace, platform::IoError::ReadOnly,
                             platform::IoError::TooLarge, platform::IoError::Denied}) {
        for (const Operation operation : {Operation::Create, Operation::WriteAt}) {
            Clear();
            test::FaultyFileSystem files;
            const platform::ScopedFileSystem use(files);
            files.Fail({error, operation, Root(1), 7});
            NotedReport report;
            EXPECT_EQ(Run(report), "");
            const bool ends =
                error == platform::IoError::NoSpace || error == platform::IoError::ReadOnly;
            EXPECT_EQ(report.ended.size(), ends ? 1U : 0U);
            EXPECT_EQ(report.failed[1].empty(), ends);
            ExpectNothingHalf(report);
            ExpectComplete(0, report);
        }
    }
    Clear();
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetMedium([&](const std::string& path, platform::MediumFacts& facts) {
        facts.largestFile = path.starts_with(Root(1)) ? 10'000 : facts.largestFile;
    });
    NotedReport limited;
    EXPECT_EQ(Run(limited), "");
    EXPECT_EQ(limited.failed[1].size(), 3U) << "two of 50,000 bytes and one with holes";
    EXPECT_THAT(limited.failed[1]["HOLES"], HasSubstr("can have no more than 10000"));
    ExpectComplete(0, limited);
    Clear();
    files.SetFreeSpace(30'000);
    NotedReport full;
    EXPECT_EQ(Run(full), "");
    EXPECT_THAT(full.ended[1], HasSubstr("too little space"));
    ExpectNothingHalf(full);
}

TEST_F(FanTest, AMediumThatReallyFillsUpLeavesNothingHalf) {
    m_source.Write("A", SomeBytes(300'000, 1));
    m_source.Write("B", SomeBytes(300'000, 2));
    for (int i = 0; i < 200; ++i) {
        m_source.Write("small/" + std::to_string(i), SomeBytes(4000, 1));
    }
    List();
    m_targets.MakeFolder("t1");
    test::WithMedium(m_targets.Path("t1"), "1m", [&] {
        NotedReport report;
        FanSettings settings = SmallSettings();
        settings.smallFile = 400'000; // no question about room before
        EXPECT_EQ(Run(report, settings), "");
        EXPECT_THAT(report.ended[1], HasSubstr("No space left"));
        ExpectNothingHalf(report);
        ExpectComplete(0, report);
    });
}

TEST_F(FanTest, CancelledAtAnyQuestionNothingHiddenOrHalfRemains) {
    MakeSource();
    int questions = 0;
    for (int last = 0; last < 1000; last += 1 + last / 8) {
        Clear();
        NotedReport report;
        int asked = 0;
        report.goesOn = [&] { return ++asked <= last; };
        const std::string outcome = Run(report);
        ExpectNothingHalf(report);
        questions = std::max(questions, last);
        if (outcome.empty()) {
            ExpectComplete(0, report);
            break;
        }
        EXPECT_EQ(outcome, "Cancelled.");
    }
    EXPECT_GT(questions, 20);
}

/// A slow target holds the reader up; what is read and not written stays bounded.
TEST_F(FanTest, NoMoreIsOnItsWayThanMayBe) {
    m_source.Write("A", SomeBytes(600'000, 1));
    List();
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetDelay(Operation::WriteAt, std::chrono::microseconds(300));
    std::unique_ptr<platform::Folder> source;
    ASSERT_TRUE(platform::Files().OpenFolder(m_source.Path(), source));
    NotedReport report;
    std::uint64_t most = 0;
    Fan* running = nullptr;
    report.goesOn = [&] {
        if (running != nullptr) {
            most = std::max(most, running->BytesRead() - running->Progress(0).written);
        }
        return true;
    };
    Fan fan(*source, {Root(0)}, {}, report, SmallSettings());
    running = &fan;
    fan.Copy(m_files.front());
    fan.Finish();
    EXPECT_EQ(fan.Progress(0).proven, 600'000U);
    EXPECT_GT(most, 8192U);
    EXPECT_LE(most, SmallSettings().mostInFlight);
}

TEST_F(FanTest, WhatATakerThrowsEndsTheFan) {
    class Throwing final : public BlockTaker {
        void Begin(const FanItem&) override {}
        void Take(std::string_view) override { throw Failure("No hash."); }
        void End(const FanItem&, bool) override {}
    };
    MakeSource();
    Throwing taker;
    NotedReport report;
    EXPECT_EQ(Run(report, SmallSettings(), 2, {&taker}), "No hash.");
    ExpectNothingHalf(report);
}

} // namespace
} // namespace nqp2::copy
