// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"
#include "tests/bridge/worker_test.h"

#include <atomic>

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kTotal = 4000000000;

/// A host that is told of progress. Written to on the progress thread, read after its answer.
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
    Bytes Tell(std::uint32_t position) { return Tell(Image({position, kTotal, 9, 0})); }
    static Bytes Answer(std::uint32_t position, std::uint32_t abort) {
        return Image({position, kTotal, abort, 0});
    }

    std::uint32_t m_registration = 1;
    std::atomic<int> m_answers = 0;
    Host m_host;
    CTNQ264BitSupport m_proxy;
};

TEST_F(ProgressTest, TheHostIsToldAndItsWishTravelsBackUntilAnotherReplacesIt) {
    EXPECT_EQ(m_proxy.SetImpCallBack(nullptr, nullptr), 1);
    m_registration = 5;
    EXPECT_EQ(Register(&m_host), 1) << "no message while the thread runs";
    EXPECT_EQ(m_channels.Calls("callback Send 20003").size(), 1U);
    // What the host finds in its flag is what it left there.
    std::int32_t left = 0;
    for (const std::uint32_t wish : {0U, 1U, 0U, 1U}) {
        m_host.flagAfter = static_cast<std::int32_t>(wish);
        EXPECT_EQ(Tell(3), Answer(3, wish));
        EXPECT_EQ(m_host.flagBefore, std::exchange(left, m_host.flagAfter));
    }
    EXPECT_THAT(m_host.heard, ElementsAre(3, kTotal, 3, kTotal, 3, kTotal, 3, kTotal));
    Host second;
    EXPECT_EQ(Register(&second), 1);
    EXPECT_EQ(Tell(4), Answer(4, 0));
    EXPECT_EQ(Register(nullptr), 1);
    EXPECT_EQ(Tell(5), Answer(5, 0)) << "no host is asked, the worker is answered";
    EXPECT_EQ(m_proxy.SetImpCallBack(nullptr, &second), 1);
    Tell(6);
    EXPECT_THAT(second.heard, ElementsAre(4, kTotal));
    // Odd messages and a host that throws do not end it.
    EXPECT_EQ(Register(&second), 1);
    second.heard.clear();
    second.meanwhile = [] { throw std::runtime_error("host"); };
    m_channels.Push("callback", 20003, Image({1}));
    m_channels.Push("callback", 20004, Bytes());
    EXPECT_EQ(Tell(Image({1, 2, 3})), Image({0, 0, 1, 0}));
    EXPECT_THAT(second.heard, ElementsAre(0, 0)) << "of one cut off, not of an empty one";
}

TEST_F(ProgressTest, ClosingAsksForAbortWhateverTheHostSaysAndWaitsForNoRoom) {
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
    m_channels.isFull = true; // a worker that reads no answers
    m_channels.Push("callback", 20004, Answer(3, 0));
    EXPECT_TRUE(m_channels.WaitFor("callback GetSendBuffer+abort", 3));
    EXPECT_EQ(m_proxy.Close(), 1);
}

class WorkerProxyTest : public WorkerTest {};

TEST_F(WorkerProxyTest, OpensAndClosesItsChannelsInOrderWithAServerForASystemObject) {
    Rows expected = {"CreateChannel 20000 45360000 45360000 2147483647 2147483647",
                     "request OpenSubChannel 20000 20480 20480 2147483647 2147483647",
                     "request Close", "callback Close"};
    for (const bool hasObject : {false, true}) {
        if (hasObject) {
            Installed().systemObject = this;
            expected.insert(expected.begin() + 2,
                            "callback OpenSubChannel 20023 10240 10240 4294967295 4294967295");
            expected.emplace_back("server Close");
        }
        const std::size_t before = m_channels.Calls().size();
        CTNQ264BitSupport proxy;
        EXPECT_EQ(proxy.Close(), 1) << "never opened";
        EXPECT_EQ(proxy.Open(), 1);
        EXPECT_TRUE(!hasObject || m_channels.WaitFor("server Send 20023 10"));
        EXPECT_EQ(proxy.Close(), 1);
        EXPECT_EQ(proxy.Close(), 1);
        Rows calls = m_channels.Calls();
        calls.erase(calls.begin(), calls.begin() + static_cast<long>(before));
        std::erase_if(calls, [](const std::string& call) {
            return call.starts_with("server") && call != "server Close";
        });
        EXPECT_EQ(calls, expected);
    }
}

TEST_F(WorkerProxyTest, OfAParserOpensAtConstructionAndClosesWithTheFirstHolder) {
    AnswerWith(1);
    {
        CNQP2Parser parser;
        EXPECT_EQ(m_channels.Calls("callback")[1], "callback Send 20003 4");
        for (const std::size_t opened : {1U, 2U}) { // kept at first
            EXPECT_EQ(parser.Init(), 0);
            EXPECT_EQ(m_channels.Calls("CreateChannel").size(), opened);
            EXPECT_EQ(parser.Release(), 0);
            EXPECT_EQ(m_channels.OpenChannels(), 0);
        }
        EXPECT_EQ(m_channels.Calls("callback Send").size(), 1) << "Init does not register";
    }
    CNQP2Parser first;
    {
        CNQP2Parser second;
        second = first;
        EXPECT_EQ(m_channels.OpenChannels(), 2) << "the second proxy has no holder any more";
        EXPECT_EQ(second.StartRTExport(1), 1);
    }
    EXPECT_EQ(m_channels.OpenChannels(), 0) << "without Release";
    EXPECT_EQ(first.StartRTExport(1), 0);
}

} // namespace
} // namespace nqp2::bridge
