// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/support/tracing.h"
#include "tests/worker/worker_stage.h"

#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <thread>

namespace nqp2::worker {
namespace {

/// What the progress callback heard and shall say.
struct Heard {
    std::atomic<std::uint32_t> last{0};
    std::atomic<std::uint32_t> total{0};
    std::atomic<int> calls{0};
    std::atomic<std::uint32_t> abortAt{0xFFFFFFFF};
};

void Hear(std::uint32_t position, std::uint32_t total, std::int32_t& abort, void* context) {
    auto& heard = *static_cast<Heard*>(context);
    heard.last = position;
    heard.total = total;
    ++heard.calls;
    abort = position >= heard.abortAt ? 1 : 0;
}

/// Parsers of this process and the worker program itself.
class WorkerProcessTest : public testing::Test {
protected:
    WorkerProcessTest() {
        m_parser.SetImpCallBack(Hear, &m_heard);
        m_stage.card.AddFile("VIDEO/0001AB.MXF", Essence(5'000'000, 1));
    }
    ~WorkerProcessTest() override {
        m_parser.Release();
        R8XDCAMParser_ResetSysInterface();
        LeaveWorker();
        EXPECT_EQ(test::CountEntries(m_stage.socket.Path()), 0U) << "its socket";
    }

    bool Import() { return m_stage.Import(m_parser); }
    void LimitMemory(rlim_t bytes) const {
        const rlimit limit{bytes, RLIM_INFINITY};
        ASSERT_EQ(prlimit(m_worker, RLIMIT_AS, &limit, nullptr), 0);
    }

    WorkerStage m_stage;
    const pid_t m_worker = m_stage.StartWorker();
    Heard m_heard;
    OpenParser m_parser;
};

TEST_F(WorkerProcessTest, TheHostIsToldAndCancelsAtAnyPosition) {
    for (const std::uint32_t position : {0U, 1000U, 4000U}) {
        m_heard.abortAt = position;
        EXPECT_FALSE(Import());
        EXPECT_EQ(m_parser.LastError(), "Cancelled.");
        EXPECT_TRUE(FilesBelow(m_stage.to.Path()).empty());
    }
    m_heard.abortAt = 0xFFFFFFFF;
    m_heard.calls = 0;
    EXPECT_TRUE(Import()) << m_parser.LastError();
    EXPECT_GE(m_heard.calls, 2);
    std::uint32_t done = 0;
    std::uint32_t total = 0;
    m_parser.GetUploadOffset(done, total);
    EXPECT_TRUE(done == m_heard.last && total == m_heard.last && m_heard.total == m_heard.last);
}

/// What a static parser does when a child that the host forked exits, and what the child may do.
TEST_F(WorkerProcessTest, AForkedChildEndsNothingOfItsParents) {
    const SystemInterface own = HostInterface();
    EXPECT_EQ(test::RunInChild([&] {
                  alarm(20);
                  if (m_parser.SetWriteBlockSize(65536) == 1) {
                      return 1; // a request on the parent's channel
                  }
                  R8XDCAMParser_ResetSysInterface();
                  m_parser.Release();
                  R8P2Parser_SetSysInterface(own.systemObject, own.table);
                  m_parser.Init();
                  const bool isServed = m_parser.SetWriteBlockSize(65536) == 1;
                  m_parser.Release();
                  R8XDCAMParser_ResetSysInterface();
                  LeaveWorker();
                  return isServed ? 7 : 2;
              }),
              7);
    EXPECT_TRUE(Import()) << m_parser.LastError();
    EXPECT_GE(m_heard.calls, 2);
}

#ifndef NQP2_MEMORY_IS_INSTRUMENTED
/// Address space for more and more of a session: its memory, its first thread, its others.
TEST_F(WorkerProcessTest, ASessionForWhichThereIsNoRoomEndsAlone) {
    std::ifstream file("/proc/" + std::to_string(m_worker) + "/statm");
    rlim_t pages = 0;
    file >> pages;
    const rlim_t size = pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    int served = 0;
    int refused = 0;
    for (rlim_t more = 0; more < 160; more += 5) {
        SCOPED_TRACE(more);
        LimitMemory(size + (more << 20U));
        CNQP2Parser parser;
        parser.Init();
        ++(parser.SetWriteBlockSize(65536) == 1 ? served : refused);
        LimitMemory(RLIM_INFINITY);
        parser.Release();
        ASSERT_EQ(m_parser.SetWriteBlockSize(65536), 1) << "the others";
        ASSERT_EQ(test::ChildNamed("nqp2-worker"), m_worker);
    }
    EXPECT_TRUE(served > 0 && refused > 0) << served << " served, " << refused << " refused";
}

TEST_F(WorkerProcessTest, ARequestForWhichThereIsNoMemoryTellsSo) {
    ASSERT_EQ(m_parser.SetWriteBlockSize(64 << 20), 1);
    LimitMemory(1);
    EXPECT_FALSE(Import());
    LimitMemory(RLIM_INFINITY);
    EXPECT_EQ(m_parser.LastError(), "Out of memory.");
    EXPECT_TRUE(std::filesystem::is_empty(m_stage.to.Path()));
}
#endif

/// The recording of a host that has gone is completed, beside what others want.
TEST_F(WorkerProcessTest, ASlowCardHoldsUpNoNewcomer) {
    if (!test::CanTrace()) {
        GTEST_SKIP() << "strace is missing or may not trace";
    }
    const test::CardBuilder card;
    {
        OpenParser leaving;
        EXPECT_EQ(leaving.StartRTExport(0), 0) << "no parameters";
        ASSERT_TRUE(leaving.StartRecording(card.Root()));
        EXPECT_EQ(leaving.StartRTExport(0), 0) << "one at a time";
        ASSERT_TRUE(leaving.AddFrame(EncodePictures(kDv25Pal, 1).front()));
        const test::Tracer slow(m_worker,
                                {"-o", "/dev/null", "-e", "inject=fsync:delay_enter=2000000"});
        leaving.Release();
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_LT(test::TimeOf([] { EXPECT_EQ(OpenParser().SetWriteBlockSize(65536), 1); }),
                  test::kSlack);
        EXPECT_TRUE(FilesBelow(card.Folder().Path("CONTENTS/CLIP")).empty()) << "not slow at all";
    }
    EXPECT_TRUE(test::Eventually(
        [&] { return FilesBelow(card.Folder().Path()).count("CONTENTS/CLIP/0001AA.XML") == 1; }));
}

TEST_F(WorkerProcessTest, ThousandsOfParsersLeaveNothingBehind) {
    const auto useParsers = [](int count) {
        for (int i = 0; i < count && !HasFailure(); ++i) {
            EXPECT_EQ(OpenParser().SetSystemType(VS_50I), 1);
        }
    };
    const std::string worker = std::to_string(m_worker);
    useParsers(1);
    const test::Holdings own = test::Settled();
    const test::Holdings others = test::Settled(worker);
    // Side by side, as each close waits some twenty milliseconds for its threads.
    constexpr int kHosts = 12;
    std::vector<std::thread> hosts;
    for (int i = 0; i < kHosts; ++i) {
        hosts.emplace_back(useParsers, 3000 / kHosts);
    }
    EXPECT_TRUE(Import()) << "beside all of them";
    for (std::thread& host : hosts) {
        host.join();
    }
    EXPECT_TRUE(test::IsBackTo(own));
    EXPECT_TRUE(test::IsBackTo(others, 0, worker));
}

/// Requests wait without end, as the channel was told to; what needs no answer does not.
TEST_F(WorkerProcessTest, AStoppedWorkerHoldsUpNoClose) {
    kill(m_worker, SIGSTOP);
    ASSERT_EQ(waitpid(m_worker, nullptr, WUNTRACED), m_worker);
    EXPECT_LT(test::TimeOf([&] { m_parser.Release(); }), test::kSlack);
    // One that stopped for good is no worker: five seconds are what a channel waits for it.
    EXPECT_LT(test::TimeOf([] { OpenParser(); }), 15000);
    kill(m_worker, SIGCONT);
    m_parser.Init();
    EXPECT_EQ(m_parser.SetSystemType(VS_50I), 1);
}

} // namespace
} // namespace nqp2::worker
