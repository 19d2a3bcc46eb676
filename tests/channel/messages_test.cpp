// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/channel/channel_test.h"

#include <array>
#include <future>

namespace nqp2::test {
namespace {

using MessagesTest = ChannelTest;

/// Sends from one end and compares at the other.
void ExpectArrives(const SysInterfaceTable& from, ChannelHandle sender, const SysInterfaceTable& to,
                   ChannelHandle receiver, std::uint32_t length) {
    const std::uint32_t id = 20000 + length % 97;
    ASSERT_EQ(SendPattern(from, sender, id, length), kChannelDone);
    const Received received = Receive(to, receiver);
    ASSERT_EQ(received.status, kChannelDone);
    EXPECT_EQ(received.id, id);
    EXPECT_EQ(received.length, length);
    ASSERT_NE(received.buffer, nullptr); // also when it is empty
    EXPECT_TRUE(HasPattern(received.buffer, length, id));
    std::memset(received.buffer, 0, length); // readers store terminators
    EXPECT_EQ(to.ReleasePacket(receiver, received.buffer, received.length), kChannelDone);
}

TEST_F(MessagesTest, ArriveWholeInBothDirections) {
    for (const std::uint32_t size : {1U, 4095U, 65536U, 65537U, kRequestSize}) {
        SCOPED_TRACE(size);
        Connect(size, size);
        for (const std::uint32_t length : {0U, 1U, size}) {
            ExpectArrives(Host(), m_host, WorkerEnd(), m_worker, length);
            ExpectArrives(WorkerEnd(), m_worker, Host(), m_host, length);
        }
        EXPECT_EQ(SendPattern(Host(), m_host, 1, 0), kChannelDone);
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        ASSERT_EQ(WorkerEnd().GetSendBuffer(m_worker, &buffer, &capacity, nullptr), kChannelDone);
        EXPECT_EQ(static_cast<std::uint32_t>(capacity), size);
        EXPECT_EQ(WorkerEnd().SendPacket(m_worker, 1, buffer, size + 1), kChannelMisuse);
        EXPECT_EQ(WorkerEnd().SendPacket(m_worker, 1, buffer, size), kChannelDone);
        Host().CloseChannel(&m_host);
        WorkerEnd().CloseChannel(&m_worker);
    }
}

TEST_F(MessagesTest, SizesThatNoChannelHasOpenNone) {
    EXPECT_EQ(Host().CreateChannel(7, 0, 4096, 1, 1), 0U);
    EXPECT_EQ(Host().CreateChannel(7, 4096, (64U << 20U) + 1, 1, 1), 0U);
    Connect();
    EXPECT_EQ(Host().OpenSubChannel(m_host, 50, (64U << 20U) + 1, 1, 1, 1), 0U);
    EXPECT_EQ(Host().OpenSubChannel(m_host, 50, 1, 0xFFFFFFFF, 1, 1), 0U);
}

TEST_F(MessagesTest, AChannelHoldsFourSmallMessagesOrOneLarge) {
    for (const auto& [size, slots] : {std::pair(65536U, 4U), std::pair(65537U, 1U)}) {
        Connect(size, size, 20);
        for (std::uint32_t id = 1; id <= slots; ++id) {
            EXPECT_EQ(SendPattern(Host(), m_host, id), kChannelDone);
        }
        EXPECT_EQ(SendPattern(Host(), m_host, 9), kChannelTimedOut);
        std::vector<Received> held;
        for (std::uint32_t id = 1; id <= slots; ++id) {
            held.push_back(Receive(WorkerEnd(), m_worker));
            EXPECT_EQ(held.back().id, id); // in order
        }
        EXPECT_EQ(SendPattern(Host(), m_host, 9), kChannelTimedOut) << "taken is not released";
        EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, held.back().buffer, 0), kChannelDone);
        EXPECT_EQ(SendPattern(Host(), m_host, 10), kChannelDone);
        EXPECT_EQ(NextId(WorkerEnd(), m_worker), 10);
        Host().CloseChannel(&m_host);
        WorkerEnd().CloseChannel(&m_worker);
    }
}

TEST_F(MessagesTest, ABufferThatWasNotSentIsGrantedAgain) {
    Connect(100000, 100000, 0);
    void* first = nullptr;
    void* second = nullptr;
    std::int32_t capacity = 0;
    EXPECT_EQ(Host().GetSendBuffer(m_host, &first, &capacity, nullptr), kChannelDone);
    EXPECT_EQ(Host().GetSendBuffer(m_host, &second, &capacity, nullptr), kChannelDone);
    EXPECT_EQ(first, second);
    EXPECT_EQ(Host().SendPacket(m_host, 1, static_cast<char*>(first) + 1, 1), kChannelMisuse);
    EXPECT_EQ(Host().SendPacket(m_host, 1, first, 1), kChannelDone);
    EXPECT_EQ(Host().SendPacket(m_host, 1, first, 1), kChannelMisuse) << "granted no more";
}

TEST_F(MessagesTest, ReleaseFreesOneOrAllAndIsHarmlessWithoutAny) {
    Connect(16, 16, 0);
    EXPECT_EQ(Host().ReleasePacket(m_host, nullptr, 0), kChannelDone);
    for (std::uint32_t id = 1; id <= 4; ++id) {
        ASSERT_EQ(SendPattern(Host(), m_host, id), kChannelDone);
    }
    const Received first = Receive(WorkerEnd(), m_worker);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, static_cast<char*>(first.buffer) + 1, 0),
              kChannelMisuse);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, first.buffer, 0), kChannelDone);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, first.buffer, 0), kChannelMisuse) << "twice";
    Receive(WorkerEnd(), m_worker);
    Receive(WorkerEnd(), m_worker);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, nullptr, 0), kChannelDone);
    // What has arrived and was not handed out is not touched.
    EXPECT_EQ(NextId(WorkerEnd(), m_worker), 4);
    for (std::uint32_t id = 5; id <= 8; ++id) {
        EXPECT_EQ(SendPattern(Host(), m_host, id), kChannelDone);
    }
}

TEST_F(MessagesTest, ASetAbortFlagEndsWaitingAndRefusesNothingElse) {
    Connect(100000, 100000);
    std::int32_t abortFlag = 1;
    void* buffer = nullptr;
    std::int32_t capacity = 0;
    EXPECT_EQ(Host().GetSendBuffer(m_host, &buffer, &capacity, &abortFlag), kChannelDone);
    ASSERT_EQ(Host().SendPacket(m_host, 1, buffer, 0), kChannelDone);
    EXPECT_EQ(Host().GetSendBuffer(m_host, &buffer, &capacity, &abortFlag), kChannelAborted);
    EXPECT_EQ(Receive(WorkerEnd(), m_worker, &abortFlag).id, 1U);
    EXPECT_EQ(Receive(WorkerEnd(), m_worker, &abortFlag).status, kChannelAborted);
}

TEST_F(MessagesTest, WaitingEndsOnTimeAndOnTheFlag) {
    Connect(100000, 100000, 60);
    ASSERT_EQ(SendPattern(Host(), m_host, 1), kChannelDone);
    for (const bool withFlag : {false, true}) {
        std::int32_t abortFlag = 0;
        std::int32_t* const flag = withFlag ? &abortFlag : nullptr;
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        std::int32_t status = 0;
        const long sending =
            TimeOf([&] { status = Host().GetSendBuffer(m_host, &buffer, &capacity, flag); });
        EXPECT_EQ(status, kChannelTimedOut);
        const long receiving = TimeOf([&] { status = Receive(Host(), m_host, flag).status; });
        EXPECT_EQ(status, kChannelTimedOut);
        for (const long time : {sending, receiving}) {
            EXPECT_GE(time, 60);
            EXPECT_LT(time, 60 + kSlack);
        }
    }
    Host().CloseChannel(&m_host);
    WorkerEnd().CloseChannel(&m_worker);

    Connect();
    std::int32_t abortFlag = 0;
    std::thread host([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        std::atomic_ref(abortFlag).store(1, std::memory_order_relaxed);
    });
    EXPECT_LT(
        TimeOf([&] { EXPECT_EQ(Receive(Host(), m_host, &abortFlag).status, kChannelAborted); }),
        50 + kSlack);
    host.join();
}

TEST_F(MessagesTest, SeveralThreadsShareOneChannel) {
    Connect();
    constexpr std::uint32_t kMessages = 2000;
    std::vector<std::future<std::vector<std::int32_t>>> receivers;
    for (int i = 0; i < 3; ++i) {
        receivers.push_back(std::async(std::launch::async, [&] {
            std::vector<std::int32_t> ids;
            for (std::int32_t id = 0; (id = NextId(WorkerEnd(), m_worker)) > 0;) {
                ids.push_back(id);
            }
            EXPECT_EQ(SendPattern(WorkerEnd(), m_worker, 1), kChannelClosed);
            return ids;
        }));
    }
    for (std::uint32_t id = 1; id <= kMessages; ++id) {
        ASSERT_EQ(SendPattern(Host(), m_host, id), kChannelDone);
    }
    Host().CloseChannel(&m_host);
    std::vector<std::int32_t> all;
    for (auto& receiver : receivers) {
        const std::vector<std::int32_t> ids = receiver.get();
        EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
        all.insert(all.end(), ids.begin(), ids.end());
    }
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), kMessages);
    EXPECT_EQ(all.back(), static_cast<std::int32_t>(kMessages));
    EXPECT_EQ(std::unique(all.begin(), all.end()), all.end());
}

} // namespace
} // namespace nqp2::test
