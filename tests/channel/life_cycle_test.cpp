// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/channel/channel_test.h"

#include <atomic>
#include <future>
#include <sys/resource.h>

namespace nqp2::test {
namespace {

using LifeCycleTest = ChannelTest;

void ExpectDeaf(const SysInterfaceTable& table, ChannelHandle handle) {
    EXPECT_EQ(Receive(table, handle).status, kChannelClosed);
    EXPECT_EQ(Grant(table, handle).status, kChannelClosed);
    EXPECT_EQ(table.SendPacket(handle, 1, &handle, 0), kChannelClosed);
    EXPECT_EQ(table.ReleasePacket(handle, nullptr, 0), kChannelClosed);
    EXPECT_EQ(table.OpenSubChannel(handle, 1, 0, 0, 0, 0), 0U);
}

TEST_F(LifeCycleTest, HandlesThatNameNoChannelAreSafe) {
    Connect();
    ChannelHandle copy = m_host;
    EXPECT_EQ(Host().CloseChannel(&m_host), kChannelDone);
    EXPECT_EQ(m_host, 0U);
    EXPECT_EQ(Host().CloseChannel(&m_host), kChannelDone);
    EXPECT_EQ(Host().CloseChannel(&copy), kChannelDone) << "a second field with the same handle";
    for (const ChannelHandle handle : {copy, m_host, ~ChannelHandle{0}}) {
        ExpectDeaf(Host(), handle);
    }
    EXPECT_EQ(Host().CloseChannel(nullptr), kChannelMisuse);
}

TEST_F(LifeCycleTest, WhatArrivedBeforeTheEndIsGivenAndThenTheEndForEver) {
    Connect();
    for (std::uint32_t id = 1; id <= 3; ++id) {
        ASSERT_EQ(SendPattern(Host(), m_host, id, 8), kChannelDone);
    }
    // Unread in the host's queue: the system reports a reset ahead of what arrived.
    ASSERT_EQ(SendPattern(WorkerEnd(), m_worker, 9), kChannelDone);
    Host().CloseChannel(&m_host);
    for (std::uint32_t id = 1; id <= 3; ++id) {
        const Received received = Receive(WorkerEnd(), m_worker);
        EXPECT_EQ(received.id, id);
        EXPECT_TRUE(HasPattern(received.buffer, 8, id));
    }
    ExpectDeaf(WorkerEnd(), m_worker);
    EXPECT_EQ(Receive(WorkerEnd(), m_worker).status, kChannelClosed);
}

TEST_F(LifeCycleTest, CloseEndsWhoeverWaitsInside) {
    Connect(100000, 100000);
    ASSERT_EQ(SendPattern(Host(), m_host, 1), kChannelDone);
    const ChannelHandle handle = m_host;
    std::vector<std::future<std::int32_t>> waiting;
    for (const bool sends : {false, false, true}) {
        waiting.push_back(std::async(std::launch::async, [=] {
            return sends ? SendPattern(Host(), handle, 2) : Receive(Host(), handle).status;
        }));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_LT(TimeOf([&] {
                  Host().CloseChannel(&m_host);
                  for (auto& each : waiting) {
                      EXPECT_EQ(each.get(), kChannelClosed);
                  }
              }),
              kSlack);
}

/// Whoever closes, and on either side: what is held can be read and written until it is back.
TEST_F(LifeCycleTest, BuffersThatAreHeldOutliveTheirChannel) {
    const Holdings before = Settled();
    for (const bool ofTheHost : {true, false}) {
        Connect(100000, 100000);
        const SysInterfaceTable& table = ofTheHost ? Host() : WorkerEnd();
        ChannelHandle& field = ofTheHost ? m_host : m_worker;
        ASSERT_EQ(ofTheHost ? SendPattern(WorkerEnd(), m_worker, 9, 100000)
                            : SendPattern(Host(), m_host, 9, 100000),
                  kChannelDone);
        const ChannelHandle handle = field;
        const Received received = Receive(table, handle);
        void* const granted = Grant(table, handle).buffer;
        ASSERT_NE(granted, nullptr);
        std::thread([&] { table.CloseChannel(&field); }).join();
        Disconnect();
        EXPECT_TRUE(HasPattern(received.buffer, 100000, 9));
        FillPattern(granted, 100000, 1);
        EXPECT_EQ(Receive(table, handle).status, kChannelClosed);
        EXPECT_EQ(table.SendPacket(handle, 1, granted, 100000), kChannelClosed);
        EXPECT_TRUE(HasPattern(received.buffer, 100000, 9));
        EXPECT_EQ(table.ReleasePacket(handle, received.buffer, 0), kChannelClosed);
    }
    EXPECT_TRUE(IsBackTo(before));
}

TEST_F(LifeCycleTest, SubChannelsAreTakenByIdAndOutliveTheirParent) {
    Connect(5000, 6000, 2000);
    const ChannelHandle first = Host().OpenSubChannel(m_host, 50, 100, 200, 0, 0);
    const ChannelHandle second = Host().OpenSubChannel(m_host, 51, 0, 0, 0, 0);
    ASSERT_EQ(SendPattern(Host(), first, 5), kChannelDone) << "before anybody took it";
    ChannelHandle takenSecond = WorkerEnd().OpenSubChannel(m_worker, 51, 0, 0, 0, 0);
    ChannelHandle takenFirst = WorkerEnd().OpenSubChannel(m_worker, 50, 0, 0, 0, 0);
    Disconnect();
    EXPECT_EQ(NextId(WorkerEnd(), takenFirst), 5);
    EXPECT_EQ(Grant(WorkerEnd(), takenFirst).capacity, 200);
    EXPECT_EQ(Grant(WorkerEnd(), takenSecond).capacity, 6000);
    // A sub-channel has sub-channels, and the roles stay as they are.
    ChannelHandle third = Host().OpenSubChannel(second, 52, 0, 0, 0, 0);
    ChannelHandle takenThird = WorkerEnd().OpenSubChannel(takenSecond, 52, 0, 0, 0, 0);
    ASSERT_EQ(SendPattern(WorkerEnd(), takenThird, 6), kChannelDone);
    EXPECT_EQ(NextId(Host(), third), 6);
    for (ChannelHandle handle : {first, second, third, takenFirst, takenSecond, takenThird}) {
        Host().CloseChannel(&handle);
    }
}

TEST_F(LifeCycleTest, AnOfferThatNeverComesIsWaitedForNoLongerThanAsked) {
    Connect();
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(WorkerEnd().OpenSubChannel(m_worker, 50, 0, 0, 0, 40), 0U); }),
              40 + kSlack);
    const ChannelHandle handle = m_worker;
    auto waiting = std::async(std::launch::async,
                              [&] { return WorkerEnd().OpenSubChannel(handle, 50, 0, 0, 0, 0); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    Host().CloseChannel(&m_host);
    EXPECT_EQ(waiting.get(), 0U);
}

TEST_F(LifeCycleTest, ThreadsThatWaitForDifferentThingsDoNotTakeThemFromEachOther) {
    constexpr std::uint32_t kTooLong = 20000;
    Connect(4096, 4096, kTooLong);
    const auto start = std::chrono::steady_clock::now();
    for (std::uint32_t id = 1; id <= 300; ++id) {
        auto taker = std::async(std::launch::async, [&] {
            return WorkerEnd().OpenSubChannel(m_worker, 50, 0, 0, 0, 0);
        });
        auto receiver =
            std::async(std::launch::async, [&] { return NextId(WorkerEnd(), m_worker); });
        ChannelHandle opened = Host().OpenSubChannel(m_host, 50, 16, 16, 0, 0);
        ASSERT_EQ(SendPattern(Host(), m_host, id), kChannelDone);
        ASSERT_EQ(receiver.get(), static_cast<std::int32_t>(id));
        ChannelHandle taken = taker.get();
        ASSERT_NE(taken, 0U);
        Host().CloseChannel(&opened);
        WorkerEnd().CloseChannel(&taken);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kTooLong))
        << "a wait ended by its time-out";
}

TEST_F(LifeCycleTest, OffersThatNobodyTakesAreLimited) {
    Connect(16, 16, 0);
    std::vector<ChannelHandle> opened;
    for (int i = 0; i < 1000; ++i) {
        const ChannelHandle handle = Host().OpenSubChannel(m_host, 50, 16, 16, 0, 0);
        if (handle == 0) {
            break;
        }
        opened.push_back(handle);
    }
    ASSERT_GE(opened.size(), 64U);
    EXPECT_LT(opened.size(), 1000U);
    // There is room for messages still, and the channel lives.
    EXPECT_EQ(SendPattern(Host(), m_host, 3), kChannelDone);
    EXPECT_EQ(NextId(WorkerEnd(), m_worker), 3);
    EXPECT_EQ(SendPattern(Host(), opened.front(), 1), kChannelDone);
    EXPECT_EQ(NextId(Host(), opened.back()), kChannelClosed) << "refused";
    for (ChannelHandle& handle : opened) {
        Host().CloseChannel(&handle);
    }
}

TEST_F(LifeCycleTest, NoListenerNoChannel) {
    auto waiting = std::async(
        std::launch::async, [] { return WorkerEnd().CreateChannel(8, 0, 0, kForEver, kForEver); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    StopListening();
    EXPECT_EQ(waiting.get(), 0U);
    EXPECT_FALSE(std::filesystem::exists(m_folder.Socket()));
    EXPECT_EQ(WorkerEnd().CreateChannel(8, 0, 0, kForEver, kForEver), 0U);
    EXPECT_LT(TimeOf([] { EXPECT_EQ(Host().CreateChannel(7, 16, 16, kForEver, kForEver), 0U); }),
              kSlack);
}

/// A worker that answers each channel's first message and closes it then.
class AnsweringWorker {
public:
    AnsweringWorker() {
        for (std::thread& thread : m_threads) {
            thread = std::thread([] {
                while (ChannelHandle channel =
                           WorkerEnd().CreateChannel(7, 0, 0, kForEver, kForEver)) {
                    const std::int32_t id = NextId(WorkerEnd(), channel);
                    SendPattern(WorkerEnd(), channel, static_cast<std::uint32_t>(id) + 1);
                    NextId(WorkerEnd(), channel);
                    WorkerEnd().CloseChannel(&channel);
                }
            });
        }
    }
    ~AnsweringWorker() {
        StopListening();
        for (std::thread& thread : m_threads) {
            thread.join();
        }
    }

private:
    std::array<std::thread, 4> m_threads;
};

std::int32_t AskOnce(std::uint32_t id) {
    ChannelHandle channel = Host().CreateChannel(7, kRequestSize, kRequestSize, kForEver, kForEver);
    SendPattern(Host(), channel, id);
    const std::int32_t answer = NextId(Host(), channel);
    Host().CloseChannel(&channel);
    return answer;
}

/// How many of so many hosts at once had an answer.
int AskAtOnce(std::size_t hosts) {
    std::atomic<int> answered = 0;
    std::vector<std::thread> threads(hosts);
    for (std::thread& thread : threads) {
        thread = std::thread([&] { answered += AskOnce(5) == 6 ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return answered;
}

TEST_F(LifeCycleTest, ThousandsOfChannelsLeaveNothingBehind) {
    const AnsweringWorker worker;
    ASSERT_EQ(AskOnce(1), 2);
    const Holdings before = Settled();
    for (std::uint32_t i = 0; i < 3000; ++i) {
        ASSERT_EQ(AskOnce(i), static_cast<std::int32_t>(i + 1));
    }
    EXPECT_EQ(AskAtOnce(500), 500);
    EXPECT_TRUE(IsBackTo(before));
}

TEST_F(LifeCycleTest, FewDescriptorsMakeCallersFailOrWaitAndRecover) {
    const AnsweringWorker worker;
    ASSERT_EQ(AskOnce(1), 2);
    const Holdings before = Settled();
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    rlimit low = limit;
    low.rlim_cur = before.descriptors + 40;
    setrlimit(RLIMIT_NOFILE, &low);
    AskAtOnce(100);
    EXPECT_TRUE(Eventually([] { return AskOnce(5) == 6; })) << "alone there are enough";
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(AskOnce(1), 2);
    EXPECT_TRUE(IsBackTo(before));
}

} // namespace
} // namespace nqp2::test
