// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/abort_bell.h"
#include "channel/slots.h"

#include "tests/channel/channel_test.h"

#include <future>
#include <optional>

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

TEST_F(MessagesTest, ArriveWholeInBothDirectionsUpToTheChannelsSize) {
    for (const std::uint32_t size : {1U, 4095U, 65536U, 65537U, kRequestSize}) {
        SCOPED_TRACE(size);
        Connect(size, size);
        for (const std::uint32_t length : {0U, 1U, size}) {
            ExpectArrives(Host(), m_host, WorkerEnd(), m_worker, length);
            ExpectArrives(WorkerEnd(), m_worker, Host(), m_host, length);
        }
        const Granted granted = Grant(WorkerEnd(), m_worker);
        EXPECT_EQ(static_cast<std::uint32_t>(granted.capacity), size);
        EXPECT_EQ(WorkerEnd().SendPacket(m_worker, 1, granted.buffer, size + 1), kChannelMisuse);
        Disconnect();
    }
    EXPECT_EQ(Host().CreateChannel(7, 0, 4096, 1, 1), 0U);
    EXPECT_EQ(Host().CreateChannel(7, 4096, (64U << 20U) + 1, 1, 1), 0U);
    Connect();
    EXPECT_EQ(Host().OpenSubChannel(m_host, 50, (64U << 20U) + 1, 1, 1, 1), 0U);
}

TEST_F(MessagesTest, AChannelHoldsFourSmallMessagesOrOneLargeUntilTheyAreReleased) {
    for (const auto& [size, slots] : {std::pair(65536U, 4U), std::pair(65537U, 1U)}) {
        Connect(size, size, 20);
        for (std::uint32_t id = 1; id <= slots; ++id) {
            EXPECT_EQ(SendPattern(Host(), m_host, id), kChannelDone);
        }
        std::int32_t abortFlag = 0;
        const long time = TimeOf([&] {
            EXPECT_EQ(SendPattern(Host(), m_host, 9), kChannelTimedOut);
            EXPECT_EQ(Grant(Host(), m_host, &abortFlag).status, kChannelTimedOut);
            EXPECT_EQ(Receive(Host(), m_host, &abortFlag).status, kChannelTimedOut);
        });
        EXPECT_TRUE(time >= 3 * 20 && time < 3 * 20 + kSlack) << time;
        Received held;
        for (std::uint32_t id = 1; id <= slots; ++id) {
            held = Receive(WorkerEnd(), m_worker);
            EXPECT_EQ(held.id, id); // in order
        }
        EXPECT_EQ(SendPattern(Host(), m_host, 9), kChannelTimedOut) << "taken is not released";
        EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, held.buffer, 0), kChannelDone);
        EXPECT_EQ(SendPattern(Host(), m_host, 10), kChannelDone);
        EXPECT_EQ(NextId(WorkerEnd(), m_worker), 10);
        Disconnect();
    }
}

/// Releases that no packet tells of must not be missed by whoever is about to wait for them, nor
/// fill packets the queue while a thread that polls for all is slow to read them.
TEST_F(MessagesTest, ASenderThatWaitsHearsOfEveryRelease) {
    for (const auto& [size, othersPoll] :
         {std::pair(65536U, false), std::pair(65537U, false), std::pair(65537U, true)}) {
        Connect(size, size, 20000);
        auto poller = std::async(std::launch::async, [&, polls = othersPoll, host = m_host] {
            return polls ? Receive(Host(), host).status : kChannelClosed;
        });
        auto receiver = std::async(std::launch::async, [&] {
            std::uint32_t inOrder = 0;
            while (NextId(WorkerEnd(), m_worker) == static_cast<std::int32_t>(inOrder + 1)) {
                ++inOrder;
            }
            return inOrder;
        });
        std::uint32_t sent = 0;
        while (sent < 20000 && SendPattern(Host(), m_host, sent + 1) == kChannelDone) {
            ++sent;
        }
        Host().CloseChannel(&m_host);
        EXPECT_EQ(receiver.get(), sent);
        EXPECT_EQ(poller.get(), kChannelClosed);
        EXPECT_EQ(sent, 20000U) << "a wait ended by its time-out";
        Disconnect();
    }
}

TEST_F(MessagesTest, BuffersAreSentAndReleasedOnceAndByTheirAddress) {
    Connect(16, 16, 0);
    EXPECT_EQ(Host().ReleasePacket(m_host, nullptr, 0), kChannelDone) << "harmless";
    auto* const granted = static_cast<char*>(Grant(Host(), m_host).buffer);
    EXPECT_EQ(Grant(Host(), m_host).buffer, granted) << "was not sent, is granted again";
    EXPECT_EQ(Host().SendPacket(m_host, 1, granted + 1, 1), kChannelMisuse);
    EXPECT_EQ(Host().SendPacket(m_host, 1, granted, 1), kChannelDone);
    EXPECT_EQ(Host().SendPacket(m_host, 1, granted, 1), kChannelMisuse) << "granted no more";
    ASSERT_EQ(SendPattern(Host(), m_host, 2), kChannelDone);
    ASSERT_EQ(SendPattern(Host(), m_host, 3), kChannelDone);
    auto* const first = static_cast<char*>(Receive(WorkerEnd(), m_worker).buffer);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, first + 1, 0), kChannelMisuse);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, first, 0), kChannelDone);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, first, 0), kChannelMisuse) << "twice";
    Receive(WorkerEnd(), m_worker);
    EXPECT_EQ(WorkerEnd().ReleasePacket(m_worker, nullptr, 0), kChannelDone);
    EXPECT_EQ(NextId(WorkerEnd(), m_worker), 3) << "not handed out, not touched";
}

TEST_F(MessagesTest, AFlagThatIsRaisedEndsAWaitLongBeforeFlagsAreLookedAt) {
    Connect();
    for (const bool isLookedAt : {true, false}) {
        SCOPED_TRACE(isLookedAt);
        long time = 0;
        for (int i = 0; i < 10; ++i) {
            std::int32_t abortFlag = 0;
            std::optional<channel::RungFlag> isRung;
            if (!isLookedAt) {
                isRung.emplace(abortFlag);
            }
            std::thread waiting(
                [&] { EXPECT_EQ(Receive(Host(), m_host, &abortFlag).status, kChannelAborted); });
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            time += TimeOf([&] { channel::RaiseFlag(abortFlag), waiting.join(); });
        }
        EXPECT_LT(time, 10 * 5);
    }
}

/// The thread that polls for all has no flag, and does not hear the bell.
TEST_F(MessagesTest, AFlagThatIsRaisedEndsTheWaitOfWhoDoesNotPoll) {
    Connect();
    std::thread polling([&] { EXPECT_EQ(Receive(Host(), m_host).status, kChannelDone); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::int32_t abortFlag = 0;
    const channel::RungFlag isRung(abortFlag);
    std::thread waiting(
        [&] { EXPECT_EQ(Receive(Host(), m_host, &abortFlag).status, kChannelAborted); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    channel::RaiseFlag(abortFlag);
    waiting.join();
    EXPECT_EQ(SendPattern(WorkerEnd(), m_worker, 1), kChannelDone);
    polling.join();
}

} // namespace
} // namespace nqp2::test
