// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/request_server.h"
#include "tests/bridge/worker_test.h"

#include <regex>

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;

/// A worker that takes every connection that it is offered.
class RequestServerTest : public WorkerTest {
protected:
    RequestServerTest() {
        m_channels.SetScript([&](const std::string& channel, std::uint32_t id, const Bytes& bytes) {
            if (channel == "connection" && id == 50) {
                m_channels.Push(channel, id, bytes);
            }
        });
    }

    void Start() {
        m_server = RequestServer::Start(&m_channels.table, 0);
        ASSERT_TRUE(m_channels.WaitFor("server Send 20023 10"));
    }
    /// Connects, and gives the server's answer.
    Bytes Connected(const Bytes& record = Image({4096, 8192, 1000, 2000})) {
        m_channels.Push("server", 50, record);
        EXPECT_TRUE(m_channels.WaitFor("server Send 51 16", ++m_answers));
        return m_channels.Sent("server").back().second;
    }

    int m_answers = 0;
    std::unique_ptr<RequestServer> m_server;
};

TEST_F(RequestServerTest, ConnectsAnswersAndClosesEverythingInOrder) {
    const Bytes record = ReadWireExample("50, 51").bytes;
    Start();
    m_channels.Push("server", 51, record); // passed over, as is one without data
    m_channels.Push("server", 50, {});
    EXPECT_EQ(Connected(record), record);
    ASSERT_TRUE(m_channels.WaitFor("connection OpenSubChannel 50 0 0 0 0"));
    m_channels.Push("connection", 501, {}); // not answered
    m_channels.Push("connection", 5004, {1, 2, 3});
    ASSERT_TRUE(m_channels.WaitFor("connection Send 5004 0"));
    m_server.reset();
    EXPECT_EQ(m_channels.Sent("server")[0].second, ReadWireExample("20023").bytes);
    EXPECT_EQ(m_channels.Sent("connection")[0].second, record);
    Rows calls = m_channels.Calls();
    const std::regex others("Receive|GetSendBuffer|Send 51"); // of two threads at once
    std::erase_if(calls, [&](const std::string& call) { return std::regex_search(call, others); });
    EXPECT_THAT(calls, ElementsAre("CreateChannel 20023 10240 10240 4294967295 4294967295",
                                   "server Send 20023 10",
                                   "server OpenSubChannel 50 10240 20480 4294967295 5000",
                                   "connection Send 50 16", "connection OpenSubChannel 50 0 0 0 0",
                                   "connection Send 5004 0", "notifications Close",
                                   "connection Close", "server Close"));
}

TEST_F(RequestServerTest, WhatCannotBeOpenedIsAnsweredWithZerosAndSixteenAreEnough) {
    Start();
    EXPECT_EQ(Connected(Image({16, 1, 1})), Bytes(16)) << "too short a record";
    for (const char* const refused : {"server OpenSubChannel", "connection GetSendBuffer",
                                      "connection Send", "connection Receive"}) {
        m_channels.Refuse(refused);
        EXPECT_EQ(Connected(), Bytes(16)) << refused;
    }
    m_channels.Refuse("");
    for (std::size_t count = 1; count <= 18; ++count) {
        EXPECT_EQ(Connected() == Bytes(16), count > 16) << count;
    }
    EXPECT_EQ(m_channels.OpenChannels(), 1 + 2 * 16);
    for (const bool says52 : {true, false}) {
        m_channels.Push("connection", says52 ? 52 : 500, ReadWireExample("52").bytes);
        m_channels.Hang("connection", !says52);
        while (Connected() == Bytes(16)) { // until the thread has ended
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    m_channels.isFull = true; // a worker that reads no answers
    m_channels.Push("server", 50, {});
    m_channels.Push("server", 50, Bytes(16));
    EXPECT_TRUE(m_channels.WaitFor("server GetSendBuffer+abort", m_answers + 2));
    m_server.reset();
    EXPECT_EQ(m_channels.OpenChannels(), 0);
}

} // namespace
} // namespace nqp2::bridge
