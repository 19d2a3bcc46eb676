// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/request_server.h"
#include "tests/bridge/wire_example.h"
#include "tests/bridge/worker_test.h"

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;

/// A worker that takes every connection that it is offered.
class RequestServerTest : public WorkerTest {
protected:
    RequestServerTest() {
        m_channels.SetScript([&](const std::string& channel, std::uint32_t id, const Bytes& bytes) {
            if (channel == "connection" && id == 50 && m_takes) {
                m_channels.Push(channel, id, bytes);
            }
        });
    }

    void Start() {
        m_server = RequestServer::Start(&m_channels.table, 0);
        ASSERT_TRUE(m_channels.WaitFor("server Send 20023 10"));
    }
    void Connect(const Bytes& record = Image({4096, 8192, 1000, 2000})) {
        m_channels.Push("server", 50, record);
    }
    /// Connects, and gives the server's answer.
    Bytes Connected(const Bytes& record = Image({4096, 8192, 1000, 2000})) {
        const auto answers = m_channels.Sent("server").size();
        Connect(record);
        EXPECT_TRUE(m_channels.WaitFor("server Send 51 16", static_cast<std::ptrdiff_t>(answers)));
        return m_channels.Sent("server").back().second;
    }

    bool m_takes = true;
    std::unique_ptr<RequestServer> m_server;
};

TEST_F(RequestServerTest, ConnectsAnswersAndClosesEverythingInOrder) {
    const Bytes record = ReadWireExample("50, 51").bytes;
    Start();
    m_channels.Push("server", 51, record); // passed over, as is one without data
    m_channels.Push("server", 50, {});
    EXPECT_EQ(Connected(record), record);
    ASSERT_TRUE(m_channels.WaitFor("connection OpenSubChannel 50 0 0 0 0"));
    m_channels.Push("connection", 500, {1, 2, 3});
    m_channels.Push("connection", 777, {1});
    m_channels.Push("connection", 501, {}); // not answered
    m_channels.Push("connection", 5004, {1});
    ASSERT_TRUE(m_channels.WaitFor("connection Send 5004 0"));
    m_server.reset();

    EXPECT_THAT(m_channels.Calls("CreateChannel"),
                ElementsAre("CreateChannel 20023 10240 10240 4294967295 4294967295"));
    EXPECT_THAT(m_channels.Calls("server OpenSubChannel"),
                ElementsAre("server OpenSubChannel 50 10240 20480 4294967295 5000"));
    EXPECT_THAT(m_channels.Calls("connection Send"),
                ElementsAre("connection Send 50 16", "connection Send 500 0",
                            "connection Send 777 0", "connection Send 5004 0"));
    EXPECT_EQ(m_channels.Sent("server")[0].second, ReadWireExample("20023").bytes);
    EXPECT_EQ(m_channels.Sent("connection")[0].second, record);
    const Rows calls = m_channels.Calls();
    EXPECT_THAT(Rows(calls.end() - 3, calls.end()),
                ElementsAre("notifications Close", "connection Close", "server Close"));
}

TEST_F(RequestServerTest, SixteenConnectionsAreEnoughAndOneThatEndsMakesRoom) {
    Start();
    for (std::size_t count = 1; count <= 18; ++count) {
        EXPECT_EQ(Connected() == Bytes(16), count > 16) << count;
    }
    EXPECT_EQ(m_channels.OpenChannels(), 1 + 2 * 16);
    for (const bool saysGoodbye : {true, false}) {
        if (saysGoodbye) {
            m_channels.Push("connection", 52, ReadWireExample("52").bytes);
        } else {
            m_channels.Hang("connection");
        }
        Bytes answer = Connected(); // until the thread has ended
        for (int i = 0; i < 1000 && answer == Bytes(16); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            answer = Connected();
        }
        EXPECT_NE(answer, Bytes(16)) << saysGoodbye;
    }
    m_server.reset();
    EXPECT_EQ(m_channels.OpenChannels(), 0);
}

TEST_F(RequestServerTest, AFailedOpenIsAnsweredWithZeros) {
    struct Case {
        const char* why;
        const char* refused;
        Bytes record;
    };
    const Case cases[] = {
        {"too short a record", "", Image({16, 1, 1})},
        {"no channel", "server OpenSubChannel", Image({1, 1, 1, 1})},
        {"no buffer", "connection GetSendBuffer", Image({16, 1, 1, 1})},
        {"not sent", "connection Send", Image({16, 1, 1, 1})},
        {"gone before its answer", "connection Receive", Image({16, 1, 1, 1})},
    };
    Start();
    for (const Case& each : cases) {
        m_channels.Refuse(each.refused);
        EXPECT_EQ(Connected(each.record), Bytes(16)) << each.why;
        m_channels.Allow();
    }
    m_takes = false;
    Connect();
    ASSERT_TRUE(m_channels.WaitFor("connection Receive+abort", 2));
    m_server.reset(); // ends the wait for a worker that does not answer
    EXPECT_EQ(m_channels.Sent("server").back().second, Bytes(16));
    EXPECT_EQ(m_channels.OpenChannels(), 0);
}

TEST_F(RequestServerTest, EndsQuietlyWithoutAChannelOrAWorker) {
    for (const char* refused : {"CreateChannel", "server GetSendBuffer", "server Receive"}) {
        m_channels.Refuse(refused);
        RequestServer::Start(&m_channels.table, 0).reset();
        m_channels.Allow();
        EXPECT_EQ(m_channels.OpenChannels(), 0) << refused;
    }
}

TEST_F(RequestServerTest, TheGlobalOneLivesFromSetToResetAndASecondSetLosesTheFirst) {
    R8P2Parser_SetSysInterface(this, &m_channels.table);
    ASSERT_TRUE(m_channels.WaitFor("server Send 20023 10"));
    const std::unique_ptr<RequestServer> lost(Installed().server);
    R8P2Parser_SetSysInterface(this, &m_channels.table);
    EXPECT_NE(Installed().server, lost.get());
    R8XDCAMParser_ResetSysInterface();
    EXPECT_EQ(Installed().systemObject, this) << "stays set";
    EXPECT_EQ(m_channels.OpenChannels(), 1);
    R8XDCAMParser_ResetSysInterface();
}

} // namespace
} // namespace nqp2::bridge
