// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bridge/worker_proxy.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "tests/bridge/worker_test.h"

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Rows kOpened = {"CreateChannel 20000 45360000 45360000 2147483647 2147483647",
                      "request OpenSubChannel 20000 20480 20480 2147483647 2147483647"};

class ProxyLifeTest : public WorkerTest {};

TEST_F(ProxyLifeTest, OpensAndClosesItsChannelsInOrder) {
    CTNQ264BitSupport proxy;
    EXPECT_EQ(proxy.Close(), 1) << "never opened";
    EXPECT_THAT(m_channels.Calls(), IsEmpty());
    EXPECT_EQ(proxy.Open(), 1);
    EXPECT_EQ(m_channels.Calls(), kOpened) << "no request server without a system object";
    EXPECT_EQ(proxy.Close(), 1);
    EXPECT_EQ(proxy.Close(), 1);
    EXPECT_THAT(m_channels.Calls(),
                ElementsAre(kOpened[0], kOpened[1], "request Close", "callback Close"));
}

TEST_F(ProxyLifeTest, RunsARequestServerBesideTheCallbackChannelUntilTheChannelsAreClosed) {
    Installed().systemObject = this;
    CTNQ264BitSupport proxy;
    EXPECT_EQ(proxy.Open(), 1);
    EXPECT_TRUE(m_channels.WaitFor("server Send 20023 10"));
    EXPECT_THAT(m_channels.Calls("callback"),
                ElementsAre("callback OpenSubChannel 20023 10240 10240 4294967295 4294967295"));
    EXPECT_EQ(proxy.Close(), 1);
    const Rows calls = m_channels.Calls();
    EXPECT_EQ(calls.back(), "server Close") << "the channel below it was closed before";
    EXPECT_EQ(m_channels.OpenChannels(), 0);
}

TEST_F(ProxyLifeTest, NeedsSixSlotsAtOnceAndTheSecondLater) {
    struct Case {
        const char* slot;
        void (*clear)(SysInterfaceTable& table);
        std::int32_t opened;
        std::size_t calls;
    };
    const Case cases[] = {
        {"0", [](SysInterfaceTable& t) { t.CreateChannel = nullptr; }, -1, 0},
        {"1", [](SysInterfaceTable& t) { t.OpenSubChannel = nullptr; }, -1, 1},
        {"2", [](SysInterfaceTable& t) { t.GetSendBuffer = nullptr; }, -1, 0},
        {"3, 6, 8", [](SysInterfaceTable&) {}, 1, 2},
        {"4", [](SysInterfaceTable& t) { t.SendPacket = nullptr; }, -1, 0},
        {"5", [](SysInterfaceTable& t) { t.ReceivePacket = nullptr; }, -1, 0},
        {"7", [](SysInterfaceTable& t) { t.ReleasePacket = nullptr; }, -1, 0},
        {"9", [](SysInterfaceTable& t) { t.CloseChannel = nullptr; }, -1, 0},
    };
    m_channels.Refuse("callback Send");
    const SysInterfaceTable whole = *m_channels.Table();
    std::size_t before = 0;
    for (const Case& each : cases) {
        *m_channels.Table() = whole;
        each.clear(*m_channels.Table());
        CTNQ264BitSupport proxy;
        EXPECT_EQ(proxy.Open(), each.opened) << each.slot;
        EXPECT_EQ(m_channels.Calls().size() - before, each.calls) << each.slot;
        EXPECT_EQ(proxy.SetImpCallBack(nullptr, nullptr), -1) << each.slot;
        proxy.Close();
        before = m_channels.Calls().size();
    }
}

TEST_F(ProxyLifeTest, LeavesWhatWasOpenedBeforeAFailureAndOpensAnew) {
    CTNQ264BitSupport proxy;
    m_channels.Refuse("CreateChannel");
    EXPECT_EQ(proxy.Open(), -1);
    EXPECT_EQ(proxy.SetSystemType(VS_5994I), -1);
    m_channels.Allow();
    m_channels.Refuse("request OpenSubChannel");
    EXPECT_EQ(proxy.Open(), -1);
    EXPECT_EQ(proxy.Close(), 1);
    EXPECT_THAT(m_channels.Calls("request Close"), IsEmpty()) << "not opened: nothing to close";
    AnswerWith(1);
    EXPECT_EQ(proxy.SetSystemType(VS_5994I), 1) << "requests already have their channel";
    EXPECT_EQ(proxy.SetImpCallBack(nullptr, nullptr), -1) << "progress has none";
    m_channels.Allow();
    EXPECT_EQ(proxy.Open(), 1);
    EXPECT_EQ(proxy.Close(), 1);
    EXPECT_EQ(m_channels.OpenChannels(), 1) << "the first request channel is overwritten";
}

TEST_F(ProxyLifeTest, KeepsTheTableOfItsConstruction) {
    CTNQ264BitSupport proxy;
    R8P2Parser_SetSysInterface(nullptr, nullptr);
    CTNQ264BitSupport without;
    EXPECT_EQ(proxy.Open(), 1);
    EXPECT_EQ(without.Open(), -1);
    EXPECT_EQ(without.SetSystemType(VS_5994I), -1);
    proxy.Close();
}

TEST_F(ProxyLifeTest, AParserOpensAtConstructionRegistersAndClosesAtRelease) {
    AnswerWith(1);
    {
        CNQP2Parser parser;
        EXPECT_EQ(m_channels.Calls("callback")[1], "callback Send 20003 4");
        EXPECT_EQ(parser.Init(), 0);
        EXPECT_EQ(m_channels.Calls("CreateChannel").size(), 1) << "kept";
        EXPECT_EQ(parser.Release(), 0);
        EXPECT_EQ(m_channels.OpenChannels(), 0);
        EXPECT_EQ(parser.Release(), 0);
        EXPECT_EQ(parser.Init(), 0);
        EXPECT_EQ(m_channels.Calls("CreateChannel").size(), 2);
        EXPECT_EQ(m_channels.Calls("callback Send").size(), 1) << "Init does not register";
        { const CNQP2Parser other; } // closes without Release
        EXPECT_EQ(m_channels.OpenChannels(), 2);
        parser.Release();
    }
    EXPECT_EQ(m_channels.OpenChannels(), 0);
}

TEST_F(ProxyLifeTest, AssignedParsersShareAProxyThatTheFirstOfThemCloses) {
    AnswerWith(1);
    CNQP2Parser first;
    {
        CNQP2Parser second;
        EXPECT_EQ(m_channels.OpenChannels(), 4);
        second = first;
        EXPECT_EQ(m_channels.OpenChannels(), 2) << "nobody holds the second proxy any more";
        EXPECT_EQ(second.StartRTExport(1), 1);
    }
    EXPECT_EQ(m_channels.OpenChannels(), 0);
    EXPECT_EQ(first.StartRTExport(1), 0);
}

} // namespace
} // namespace nqp2::bridge
