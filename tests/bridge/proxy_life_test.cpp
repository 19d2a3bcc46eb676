// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"
#include "tests/bridge/worker_test.h"

#include <cstring>

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProxyLifeTest : public WorkerTest {};

TEST_F(ProxyLifeTest, OpensAndClosesItsChannelsInOrderWithAServerForASystemObject) {
    for (void* const systemObject : {static_cast<void*>(nullptr), static_cast<void*>(this)}) {
        Installed().systemObject = systemObject;
        const std::size_t before = m_channels.Calls().size();
        CTNQ264BitSupport proxy;
        EXPECT_EQ(proxy.Close(), 1) << "never opened";
        EXPECT_EQ(proxy.Open(), 1);
        EXPECT_TRUE(systemObject == nullptr || m_channels.WaitFor("server Send 20023 10"));
        EXPECT_EQ(proxy.Close(), 1);
        EXPECT_EQ(proxy.Close(), 1);
        Rows calls = m_channels.Calls();
        calls.erase(calls.begin(), calls.begin() + static_cast<long>(before));
        std::erase_if(calls, [](const std::string& call) {
            return call.starts_with("server") && call != "server Close";
        });
        Rows expected = {"CreateChannel 20000 45360000 45360000 2147483647 2147483647",
                         "request OpenSubChannel 20000 20480 20480 2147483647 2147483647",
                         "request Close", "callback Close"};
        if (systemObject != nullptr) {
            expected.insert(expected.begin() + 2,
                            "callback OpenSubChannel 20023 10240 10240 4294967295 4294967295");
            expected.emplace_back("server Close");
        }
        EXPECT_EQ(calls, expected);
    }
}

TEST_F(ProxyLifeTest, NeedsSixSlotsAtOnceAndTheSecondLater) {
    EXPECT_FALSE(IsUsable(nullptr));
    m_channels.Refuse("callback Send");
    void* slots[10];
    std::memcpy(slots, &m_channels.table, sizeof(slots));
    for (const std::size_t slot : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 9U}) { // 3 is as null as before
        void* const kept = std::exchange(slots[slot], nullptr);
        std::memcpy(&m_channels.table, slots, sizeof(slots));
        slots[slot] = kept;
        const std::size_t before = m_channels.Calls().size();
        CTNQ264BitSupport proxy;
        EXPECT_EQ(proxy.Open(), slot == 3 ? 1 : -1) << slot;
        EXPECT_EQ(m_channels.Calls().size() - before, slot == 3 ? 2 : slot == 1 ? 1 : 0) << slot;
        EXPECT_EQ(proxy.SetImpCallBack(nullptr, nullptr), -1) << slot;
        proxy.Close();
    }
}

TEST_F(ProxyLifeTest, LeavesWhatWasOpenedBeforeAFailureAndOpensAnewWithItsFirstTable) {
    CTNQ264BitSupport proxy;
    R8P2Parser_SetSysInterface(nullptr, nullptr);
    EXPECT_EQ(CTNQ264BitSupport().Open(), -1);
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

TEST_F(ProxyLifeTest, AParserOpensAtConstructionRegistersAndClosesAtRelease) {
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
        EXPECT_EQ(parser.Init(), 0);
    }
    EXPECT_EQ(m_channels.OpenChannels(), 0) << "without Release";

    CNQP2Parser first;
    {
        CNQP2Parser second;
        second = first;
        EXPECT_EQ(m_channels.OpenChannels(), 2) << "the second proxy has no holder any more";
        EXPECT_EQ(second.StartRTExport(1), 1);
    }
    EXPECT_EQ(m_channels.OpenChannels(), 0) << "the first of two holders closes";
    EXPECT_EQ(first.StartRTExport(1), 0);
}

} // namespace
} // namespace nqp2::bridge
