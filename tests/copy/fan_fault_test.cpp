// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A fan whose file calls, threads, memory or life fail at any point. Some tens of points of each are
// taken; NQP2_FAULTS=1 takes all calls, NQP2_KILLS=1000 all kills.

#include "tests/copy/fan_fixture.h"
#include "tests/support/tracing.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/syscall.h>

namespace {

std::atomic<int> threadsLeft = 1'000'000;

} // namespace

/// The system's, as long as there are threads left.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*run)(void*), void* argument) {
    static auto* const real =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return threadsLeft-- > 0 ? real(thread, attributes, run, argument) : EAGAIN;
}

namespace nqp2::copy {
namespace {

using test::Operation;

class FanFaultTest : public FanTest {
protected:
    FanFaultTest() { MakeSource({0, 4095, 4097, 50'000}); }
    ~FanFaultTest() override { threadsLeft = 1'000'000; }

    /// After whatever has happened a second run makes all good, and leaves nothing hidden.
    void ExpectTheNextMakesGood() {
        NotedReport report;
        EXPECT_EQ(Run(report), "");
        for (const std::size_t target : {0U, 1U}) {
            EXPECT_EQ(report.arrived[target].size(), m_content.size());
        }
        ExpectNothingHalf(report);
    }

    /// Lets the calls of one kind below a folder fail in turn, each once.
    void Sweep(Operation operation, const std::string& below,
               const std::function<void(const NotedReport&)>& check) {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        std::atomic<std::uint64_t> calls = 0;
        files.SetHook([&](Operation called, const std::string& path) {
            calls += called == operation && path.find(below) != std::string::npos ? 1 : 0;
        });
        Clear();
        NotedReport counted;
        EXPECT_EQ(Run(counted), "");
        files.SetHook({});
        const std::uint64_t step = std::getenv("NQP2_FAULTS") != nullptr ? 1 : 1 + calls / 6;
        for (std::uint64_t skip = 0; skip < calls; skip += step) {
            SCOPED_TRACE(std::to_string(static_cast<int>(operation)) + ", call " +
                         std::to_string(skip));
            Clear();
            files.HealAll();
            files.Fail({platform::IoError::Device, operation, below, skip, 1});
            NotedReport report;
            EXPECT_EQ(Run(report), "");
            ExpectNothingHalf(report);
            check(report);
            files.HealAll();
            ExpectTheNextMakesGood();
        }
    }
};

TEST_F(FanFaultTest, AFailingCallOfATargetConcernsThatTargetAlone) {
    for (std::size_t i = 0; i < test::kOperations; ++i) {
        Sweep(static_cast<Operation>(i), "/t1/", [&](const NotedReport& report) {
            EXPECT_TRUE(report.unread.empty() && !report.ended.contains(0));
            ExpectComplete(0, report);
            // What is missing was told: of the target, or of each file.
            const std::size_t there = report.arrived.contains(1) ? report.arrived.at(1).size() : 0;
            const bool isTold = report.ended.contains(1) || report.failed.contains(1);
            EXPECT_TRUE(isTold || there == m_content.size());
        });
    }
}

TEST_F(FanFaultTest, AFailingCallOfTheSourceConcernsItsFilesAlone) {
    for (const Operation operation :
         {Operation::Open, Operation::ReadBlock, Operation::Stat, Operation::Other}) {
        Sweep(operation, m_source.Path() + '/', [&](const NotedReport& report) {
            EXPECT_FALSE(report.unread.empty());
            EXPECT_TRUE(report.ended.empty() && report.failed.empty());
            for (const std::size_t target : {0U, 1U}) {
                EXPECT_EQ(report.arrived.at(target).size() + report.unread.size(),
                          m_content.size());
            }
        });
    }
}

TEST_F(FanFaultTest, WhereThreadsAreRefusedFewerDoTheWork) {
    for (int allowed = 0; allowed < 4; ++allowed) {
        Clear();
        threadsLeft = allowed;
        NotedReport report;
        KeepingTaker taker;
        EXPECT_EQ(Run(report, SmallSettings(), 2, {&taker}), "");
        EXPECT_TRUE(taker.files == m_content);
        ExpectComplete(0, report);
        ExpectComplete(1, report);
    }
}

TEST_F(FanFaultTest, WhatKilledOnesHaveLeftGoesAndLivingOnesStay) {
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    m_targets.Write("t0/CARD/PRIVATE/.nqp2-0123456789abcdef.part", "left");
    std::unique_ptr<platform::Folder> folder;
    ASSERT_TRUE(platform::Files().OpenFolder(Root(0), folder));
    std::unique_ptr<platform::FileWriter> living;
    ASSERT_TRUE(folder->Create("living", living));
    NotedReport report;
    EXPECT_EQ(Run(report), "");
    EXPECT_EQ(Arrived(0).size(), m_content.size() + 1) << "that of the one that lives";
    living.reset();
    ExpectComplete(0, report);
}

/// At any system call of the process, in each of its threads.
TEST_F(FanFaultTest, KilledAtAnyCallNothingHalfHasANameAndTheNextMakesGood) {
    if (!test::CanTrace()) {
        GTEST_SKIP() << "strace is missing or may not trace";
    }
    const std::string trace = m_targets.Path() + "-trace";
    const auto run = [&](const std::vector<std::string>& options) {
        const pid_t child = fork();
        if (child == 0) {
            raise(SIGSTOP);
            NotedReport report;
            Run(report);
            syscall(SYS_exit_group, 0);
        }
        EXPECT_EQ(waitpid(child, nullptr, WUNTRACED), child);
        const test::Tracer tracer(child, options);
        kill(child, SIGCONT);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFSIGNALED(status);
    };
    EXPECT_FALSE(run({"-o", trace}));
    const char* const asked = std::getenv("NQP2_KILLS");
    const std::vector<test::SystemCall> calls = test::CallsIn(trace);
    std::filesystem::remove(trace);
    EXPECT_GT(calls.size(), 100U);
    int kills = 0;
    const auto count = static_cast<std::size_t>(asked != nullptr ? std::atoi(asked) : 12);
    for (const test::SystemCall& call : test::SomeOf(calls, count)) {
        SCOPED_TRACE(Inject(call, "signal=KILL"));
        Clear();
        kills += run({"-o", "/dev/null", "-e", Inject(call, "signal=KILL")}) ? 1 : 0;
        ExpectNothingHalf({}, true);
        ExpectTheNextMakesGood();
    }
    EXPECT_GT(kills, 1);
}

} // namespace
} // namespace nqp2::copy
