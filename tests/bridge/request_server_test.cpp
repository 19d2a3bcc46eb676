// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/file_services.h"
#include "bridge/request_server.h"
#include "tests/bridge/wire_example.h"
#include "tests/bridge/worker_test.h"

#include <chrono>

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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

    /// Starts a server and waits until it listens.
    void Start() {
        m_server = StartRequestServer(this, m_channels.Table(), 0);
        ASSERT_TRUE(m_channels.WaitFor("server Send 20023 10"));
    }
    void Connect(const Bytes& record = Image({4096, 8192, 1000, 2000})) {
        m_channels.Push("server", 50, record);
    }

    bool m_takes = true;
    std::unique_ptr<RequestServer> m_server;
};

TEST_F(RequestServerTest, ConnectsAnswersAndClosesEverythingInOrder) {
    Start();
    Connect();
    ASSERT_TRUE(m_channels.WaitFor("connection OpenSubChannel 50 0 0 0 0"));
    m_channels.Push("connection", 500, {1, 2, 3});
    m_channels.Push("connection", 777, {1});
    m_channels.Push("connection", 501, {});
    m_channels.Push("connection", 5004, {1});
    ASSERT_TRUE(m_channels.WaitFor("connection Send 5004 0"));
    m_server.reset();

    EXPECT_THAT(m_channels.Calls("CreateChannel"),
                ElementsAre("CreateChannel 20023 10240 10240 4294967295 4294967295"));
    Rows server = m_channels.Calls("server");
    server.resize(7); // whether it waits once more depends on when it is stopped
    EXPECT_THAT(server,
                ElementsAre("server GetSendBuffer+abort", "server Send 20023 10",
                            "server Receive+abort", "server OpenSubChannel 50 4096 8192 1000 2000",
                            "server GetSendBuffer+abort", "server Send 51 16",
                            "server Release 16"));
    EXPECT_THAT(m_channels.Calls("connection Send"),
                ElementsAre("connection Send 50 16", "connection Send 500 0",
                            "connection Send 777 0", "connection Send 5004 0"))
        << "nothing for the one without data";
    EXPECT_EQ(m_channels.Sent("server")[0].second, ReadWireExample("20023").bytes);
    EXPECT_EQ(m_channels.Sent("server")[1].second, Image({4096, 8192, 1000, 2000}));
    EXPECT_EQ(m_channels.Sent("connection")[0].second, Image({4096, 8192, 1000, 2000}));
    const Rows calls = m_channels.Calls();
    EXPECT_THAT(Rows(calls.end() - 3, calls.end()),
                ElementsAre("notifications Close", "connection Close", "server Close"));
}

TEST_F(RequestServerTest, AConnectionEndsOnGoodbyeOrWithItsChannelAndMakesRoom) {
    Start();
    for (const bool saysGoodbye : {true, false}) {
        Connect();
        ASSERT_TRUE(
            m_channels.WaitFor("connection OpenSubChannel 50 0 0 0 0", saysGoodbye ? 1 : 2));
        if (saysGoodbye) {
            m_channels.Push("connection", 52, ReadWireExample("52").bytes);
        } else {
            m_channels.Hang("connection");
        }
        ASSERT_TRUE(saysGoodbye ? m_channels.WaitFor("connection Release 16", 2)
                                : m_channels.WaitFor("connection Release"));
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // for the thread to end
    }
    Connect();
    ASSERT_TRUE(m_channels.WaitFor("notifications Close"));
    m_server.reset();
    EXPECT_EQ(m_channels.OpenChannels(), 0U);
}

TEST_F(RequestServerTest, SixteenConnectionsAreEnough) {
    Start();
    const auto answers = [&] { return m_channels.Sent("server").size(); }; // the first announces
    for (std::size_t count = 1; count <= 20; ++count) {
        Connect();
        ASSERT_TRUE(m_channels.WaitFor("server Send 51 16", static_cast<std::ptrdiff_t>(count)));
        ASSERT_EQ(answers(), count + 1);
        EXPECT_EQ(m_channels.Sent("server").back().second == Bytes(16), count > 16) << count;
    }
    EXPECT_EQ(m_channels.OpenChannels(), 1U + 2 * 16);
    m_channels.Push("connection", 52, ReadWireExample("52").bytes);
    ASSERT_TRUE(m_channels.WaitFor("connection Release 16", 17)) << "the goodbye";
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // for the thread to end
    Connect();
    ASSERT_TRUE(m_channels.WaitFor("server Send 51 16", 21));
    EXPECT_NE(m_channels.Sent("server").back().second, Bytes(16)) << "there is room again";
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
        const std::size_t before = m_channels.Sent("server").size();
        Connect(each.record);
        for (int i = 0; i < 1000 && m_channels.Sent("server").size() == before; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        const auto answer = m_channels.Sent("server").back();
        EXPECT_EQ(answer.first, 51U) << each.why;
        EXPECT_EQ(answer.second, Bytes(16)) << each.why;
        m_channels.Allow();
    }
    m_server.reset();
    EXPECT_EQ(m_channels.OpenChannels(), 0U);
}

TEST_F(RequestServerTest, OtherMessagesAreReleasedAndPassedOver) {
    Start();
    m_channels.Push("server", 51, Image({1, 1, 1, 1}));
    m_channels.Push("server", 50, {});
    Connect();
    ASSERT_TRUE(m_channels.WaitFor("connection OpenSubChannel 50 0 0 0 0"));
    m_server.reset();
    EXPECT_EQ(m_channels.Calls("server OpenSubChannel").size(), 1U);
}

TEST_F(RequestServerTest, StopsWhileAConnectionIsBeingOpened) {
    m_takes = false;
    Start();
    Connect();
    ASSERT_TRUE(m_channels.WaitFor("connection Receive+abort"));
    m_server.reset();
    EXPECT_EQ(m_channels.Sent("server").back().second, Bytes(16));
    EXPECT_EQ(m_channels.OpenChannels(), 0U);
}

TEST_F(RequestServerTest, EndsQuietlyWithoutAChannelOrAWorker) {
    for (const char* refused : {"CreateChannel", "server GetSendBuffer", "server Receive"}) {
        m_channels.Refuse(refused);
        m_server = StartRequestServer(this, m_channels.Table(), 0);
        m_server.reset();
        m_channels.Allow();
        EXPECT_EQ(m_channels.OpenChannels(), 0U) << refused;
    }
    SysInterfaceTable unusable = *m_channels.Table();
    unusable.CloseChannel = nullptr;
    const std::size_t before = m_channels.Calls().size();
    m_server = StartRequestServer(this, &unusable, 0);
    m_server.reset();
    EXPECT_EQ(m_channels.Calls().size(), before);
}

TEST_F(RequestServerTest, TheGlobalOneLivesFromSetToResetAndASecondSetLosesTheFirst) {
    R8XDCAMParser_ResetSysInterface();
    R8P2Parser_SetSysInterface(this, nullptr);
    EXPECT_EQ(Installed().server, nullptr);
    R8P2Parser_SetSysInterface(this, m_channels.Table());
    ASSERT_TRUE(m_channels.WaitFor("server Send 20023 10"));
    const std::unique_ptr<RequestServer> lost(Installed().server);
    R8P2Parser_SetSysInterface(this, m_channels.Table());
    EXPECT_NE(Installed().server, lost.get());
    R8XDCAMParser_ResetSysInterface();
    EXPECT_EQ(Installed().server, nullptr);
    EXPECT_EQ(Installed().systemObject, this) << "stays set";
    EXPECT_EQ(m_channels.OpenChannels(), 1U);
    R8XDCAMParser_ResetSysInterface();
}

/// Answers each number with its last two digits and more than there is room for in two cases.
class CountingServices : public FileServices {
public:
    using FileServices::FileServices;
    std::int32_t Serve500(const ServiceCall&) override { return 100; }
    std::int32_t Serve505(const ServiceCall& call) override { return Reply(call, 5); }
    std::int32_t Serve5000(const ServiceCall&) override { return -1; }
    std::int32_t Serve5004(const ServiceCall& call) override { return Reply(call, 4); }

private:
    static std::int32_t Reply(const ServiceCall& call, unsigned char byte) {
        call.reply[0] = byte;
        return 1;
    }
};

TEST(FileServices, AreCalledByNumberAndNeverAnswerMoreThanThereIsRoom) {
    CountingServices services(nullptr);
    Bytes request(1);
    Bytes reply(8);
    const ServiceCall call = {request, reply};
    EXPECT_EQ(Serve(services, 500, call), 8);
    EXPECT_EQ(Serve(services, 505, call), 1);
    EXPECT_EQ(reply[0], 5);
    EXPECT_EQ(Serve(services, 5004, call), 1);
    EXPECT_EQ(reply[0], 4);
    for (const std::uint32_t id : {499U, 501U, 506U, 4999U, 5000U, 5001U, 5005U, 0U}) {
        EXPECT_EQ(Serve(services, id, call), 0) << id;
    }
}

} // namespace
} // namespace nqp2::bridge
