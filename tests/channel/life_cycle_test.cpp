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
    const ChannelHandle copy = m_worker; // a second field with the same handle
    ExpectDeaf(WorkerEnd(), m_worker);
    WorkerEnd().CloseChannel(&m_worker);
    for (ChannelHandle handle : {copy, ChannelHandle{0}, ~ChannelHandle{0}}) {
        ExpectDeaf(WorkerEnd(), handle);
        EXPECT_EQ(WorkerEnd().CloseChannel(&handle), kChannelDone);
    }
}

TEST_F(LifeCycleTest, CloseEndsWhoeverWaitsInside) {
    Connect(100000, 100000);
    ASSERT_EQ(SendPattern(Host(), m_host, 1), kChannelDone);
    const ChannelHandle handle = m_host;
    auto receiver = std::async(std::launch::async, [=] { return NextId(Host(), handle); });
    auto sender = std::async(std::launch::async, [=] { return SendPattern(Host(), handle, 2); });
    auto taker = std::async(std::launch::async, [this] {
        return WorkerEnd().OpenSubChannel(m_worker, 50, 0, 0, 0, kForEver);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_LT(TimeOf([&] {
                  Host().CloseChannel(&m_host);
                  EXPECT_EQ(receiver.get(), kChannelClosed);
                  EXPECT_EQ(sender.get(), kChannelClosed);
                  EXPECT_EQ(taker.get(), 0U);
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
        EXPECT_EQ(Grant(table, handle).status, kChannelClosed);
        EXPECT_TRUE(HasPattern(received.buffer, 100000, 9));
        EXPECT_EQ(table.ReleasePacket(handle, received.buffer, 0), kChannelClosed);
    }
    EXPECT_TRUE(IsBackTo(before));
}

TEST_F(LifeCycleTest, SubChannelsAreTakenByIdInTimeAndOutliveTheirParent) {
    Connect(5000, 6000, 2000);
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(WorkerEnd().OpenSubChannel(m_worker, 50, 0, 0, 0, 40), 0U); }),
              40 + kSlack);
    ChannelHandle first = Host().OpenSubChannel(m_host, 50, 100, 200, 0, 0);
    ChannelHandle second = Host().OpenSubChannel(m_host, 51, 0, 0, 0, 0);
    ASSERT_EQ(SendPattern(Host(), first, 5), kChannelDone) << "before it is taken";
    ChannelHandle takenSecond = WorkerEnd().OpenSubChannel(m_worker, 51, 0, 0, 0, 0);
    ChannelHandle takenFirst = WorkerEnd().OpenSubChannel(m_worker, 50, 0, 0, 0, 0);
    Disconnect();
    EXPECT_EQ(NextId(WorkerEnd(), takenFirst), 5);
    EXPECT_EQ(Grant(WorkerEnd(), takenFirst).capacity, 200);
    EXPECT_EQ(Grant(WorkerEnd(), takenSecond).capacity, 6000);
    for (ChannelHandle handle : {first, second, takenFirst, takenSecond}) {
        Host().CloseChannel(&handle);
    }
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

std::int32_t AskOnce(std::uint32_t id) {
    ChannelHandle channel = Host().CreateChannel(7, kRequestSize, kRequestSize, kForEver, kForEver);
    SendPattern(Host(), channel, id);
    const std::int32_t answer = NextId(Host(), channel);
    Host().CloseChannel(&channel);
    return answer;
}

TEST_F(LifeCycleTest, FewDescriptorsMakeCallersFailOrWaitAndRecover) {
    std::vector<std::jthread> workers(4); // answer each channel's first message
    for (std::jthread& worker : workers) {
        worker = std::jthread([] {
            while (ChannelHandle channel = WorkerEnd().CreateChannel(7, 0, 0, kForEver, kForEver)) {
                const std::int32_t id = NextId(WorkerEnd(), channel);
                SendPattern(WorkerEnd(), channel, static_cast<std::uint32_t>(id) + 1);
                NextId(WorkerEnd(), channel);
                WorkerEnd().CloseChannel(&channel);
            }
        });
    }
    EXPECT_EQ(AskOnce(1), 2);
    const Holdings before = Settled();
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit low{before.at("descriptors") + 40, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &low);
    for (std::vector<std::jthread> hosts(100); std::jthread & host : hosts) {
        host = std::jthread(AskOnce, 5);
    }
    EXPECT_TRUE(Eventually([] { return AskOnce(5) == 6; })) << "alone there are enough";
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(AskOnce(1), 2);
    EXPECT_TRUE(IsBackTo(before));
    StopListening(); // ends the workers
    EXPECT_FALSE(std::filesystem::exists(m_folder.Socket()));
    EXPECT_EQ(AskOnce(1), kChannelClosed);
}

} // namespace
} // namespace nqp2::test
