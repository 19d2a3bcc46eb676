// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/bridge/worker_test.h"
#include "tests/support/child_process.h"

#include <atomic>
#include <sys/resource.h>
#include <system_error>

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;

/// A host that is told of progress. Written to on the progress thread, read after its answer is seen.
struct Host {
    std::vector<std::uint32_t> heard;
    std::int32_t flagBefore = -1;
    std::int32_t flagAfter = 0;
    std::function<void()> meanwhile = [] {};

    static void Hear(std::uint32_t position, std::uint32_t total, std::int32_t& abort,
                     void* context) {
        Host& host = *static_cast<Host*>(context);
        host.heard.insert(host.heard.end(), {position, total});
        host.flagBefore = abort;
        abort = host.flagAfter;
        host.meanwhile();
    }
};

class ProgressTest : public WorkerTest {
protected:
    ProgressTest() {
        m_channels.SetScript([&](const std::string& channel, std::uint32_t id, const Bytes&) {
            if (id == 20003) {
                m_channels.Push(channel, id, Image({m_registration}));
            } else if (channel == "callback") {
                ++m_answers;
                m_answers.notify_all();
            }
        });
        EXPECT_EQ(m_proxy.Open(), 1);
    }
    ~ProgressTest() override { m_proxy.Close(); }

    std::int32_t Register(void* host) { return m_proxy.SetImpCallBack(Host::Hear, host); }
    /// Tells of progress and gives back the answer.
    Bytes Tell(const Bytes& bytes) {
        const int before = m_answers;
        m_channels.Push("callback", 20004, bytes);
        m_answers.wait(before);
        return m_channels.Sent("callback").back().second;
    }
    Bytes Tell(std::uint32_t position) { return Tell(Image({position, 4000000000, 9, 0})); }
    static Bytes Answer(std::uint32_t position, std::uint32_t abort) {
        return Image({position, 4000000000, abort, 0});
    }

    std::uint32_t m_registration = 1;
    std::atomic<int> m_answers = 0;
    Host m_host;
    CTNQ264BitSupport m_proxy;
};

TEST_F(ProgressTest, TheHostIsToldAndItsWishTravelsBackUntilAnotherHostReplacesIt) {
    EXPECT_EQ(m_proxy.SetImpCallBack(nullptr, nullptr), 1);
    m_registration = 5;
    EXPECT_EQ(Register(&m_host), 1) << "no message while the thread runs";
    EXPECT_EQ(Tell(1), Answer(1, 0));
    m_host.flagAfter = 1;
    EXPECT_EQ(Tell(2), Answer(2, 1));
    EXPECT_EQ(m_host.flagBefore, 0);
    m_host.flagAfter = 0;
    EXPECT_EQ(Tell(3), Answer(3, 0));
    EXPECT_EQ(m_host.flagBefore, 1) << "stays until the host takes it back";
    Host second;
    EXPECT_EQ(Register(&second), 1);
    Tell(4);
    EXPECT_EQ(Register(nullptr), 1);
    EXPECT_EQ(Tell(5), Answer(5, 0)) << "no host is asked, the worker is answered";
    EXPECT_EQ(m_proxy.SetImpCallBack(nullptr, &second), 1);
    Tell(6);
    EXPECT_THAT(m_host.heard, ElementsAre(1, 4000000000, 2, 4000000000, 3, 4000000000));
    EXPECT_THAT(second.heard, ElementsAre(4, 4000000000));
    EXPECT_EQ(m_channels.Calls("callback Send 20003").size(), 1U);
}

TEST_F(ProgressTest, OddMessagesAndAThrowingHostDoNotEndIt) {
    EXPECT_EQ(Register(&m_host), 1);
    m_channels.Push("callback", 20003, Image({1}));
    m_channels.Push("callback", 20004, Bytes());
    EXPECT_EQ(Tell(Bytes(1, 7)), Image({0, 0, 0, 0}));
    EXPECT_EQ(Tell(Image({1, 2, 3})), Image({0, 0, 0, 0}));
    EXPECT_THAT(m_host.heard, ElementsAre(0, 0, 0, 0)) << "of those cut off, not of an empty one";
    EXPECT_THAT(m_channels.Calls("callback Release"),
                ElementsAre("callback Release 4", "callback Release 4", "callback Release",
                            "callback Release 1", "callback Release 12"));
    m_host.meanwhile = [] { throw std::runtime_error("host"); };
    EXPECT_EQ(Tell(1), Answer(1, 1));
}

TEST_F(ProgressTest, ClosingAsksForAbortWhateverTheHostSays) {
    EXPECT_EQ(Register(&m_host), 1);
    std::thread closing;
    m_host.meanwhile = [&] {
        closing = std::thread([&] { m_proxy.Close(); });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    };
    EXPECT_EQ(Tell(1), Answer(1, 1));
    closing.join();
    EXPECT_EQ(m_channels.OpenChannels(), 0);
    EXPECT_EQ(m_proxy.Open(), 1);
    m_host.meanwhile = [] {};
    EXPECT_EQ(Register(&m_host), 1);
    EXPECT_EQ(Tell(2), Answer(2, 0)) << "begins at 0 again";
}

TEST_F(ProgressTest, AThreadThatEndedWithItsChannelIsFollowedByANewOne) {
    m_registration = 7;
    EXPECT_EQ(Register(&m_host), 7) << "the reply's own result";
    ASSERT_TRUE(m_channels.WaitFor("callback Receive+abort"));
    m_channels.Refuse("callback Receive"); // -6: the thread ends
    m_channels.Push("callback", 1, {});
    while (m_channels.Calls("callback Release").size() < 3) { // registration, message, end
        std::this_thread::yield();
    }
    m_channels.Refuse("callback Send");
    while (Register(&m_host) == 1) { // until the thread has ended
        std::this_thread::yield();
    }
    EXPECT_EQ(Register(&m_host), -1) << "registering is tried anew";
    m_channels.Allow();
    EXPECT_EQ(Register(&m_host), 7);
    EXPECT_EQ(Tell(1), Answer(1, 0));
    EXPECT_EQ(m_host.flagBefore, 0);
    EXPECT_EQ(m_proxy.Close(), 1);
    EXPECT_EQ(Register(&m_host), -1);
}

TEST_F(ProgressTest, WithoutAThreadToAnswerNothingIsRegistered) {
    EXPECT_EQ(test::RunInChild([&] {
                  constexpr rlimit kNone = {0, 0};
                  CTNQ264BitSupport proxy;
                  const bool open = proxy.Open() == 1 && test::BecomeOrdinaryUser() &&
                                    setrlimit(RLIMIT_NPROC, &kNone) == 0;
                  try {
                      proxy.SetImpCallBack(Host::Hear, &m_host);
                  } catch (const std::system_error&) {
                      return open && m_channels.Calls("callback Send 20003").empty() ? 0 : 1;
                  }
                  return 2;
              }),
              0);
}

} // namespace
} // namespace nqp2::bridge
