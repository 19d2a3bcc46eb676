// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/progress_link.h"

#include "tests/channel/channel_test.h"

namespace nqp2::worker {
namespace {

constexpr std::int32_t kRegister = 20003;
constexpr std::int32_t kProgress = 20004;

class ProgressLinkTest : public test::ChannelTest {
protected:
    ProgressLinkTest() { Connect(4096, 4096, 1000); }
    std::int32_t NextForHost() { return test::NextId(test::Host(), m_host); }

    ProgressLink m_link;
};

TEST_F(ProgressLinkTest, WhoHasReadTheAnswerToItsRegistrationHearsOfTheNextTransfer) {
    ChannelLine line(test::WorkerEnd(), m_worker);
    for (int i = 0; i < 50; ++i) {
        std::thread registering([&] { m_link.Attach(line); });
        ASSERT_EQ(NextForHost(), kRegister);
        m_link.Begin();
        EXPECT_TRUE(m_link.Report(0, 10));
        ASSERT_EQ(NextForHost(), kProgress);
        m_link.Answered(false);
        registering.join();
    }
}

TEST_F(ProgressLinkTest, AnAnswerIsForTheTransferWhoseReportItAnswers) {
    ChannelLine line(test::WorkerEnd(), m_worker);
    m_link.Attach(line);
    m_link.Begin();
    EXPECT_TRUE(m_link.Report(0, 10));
    EXPECT_TRUE(m_link.Report(5, 10)) << "not sent: the first is not answered";
    m_link.Begin(); // the host is still busy with the other one
    EXPECT_TRUE(m_link.Report(0, 20));
    for (const std::int32_t id : {kRegister, kProgress, kProgress}) {
        EXPECT_EQ(NextForHost(), id);
    }
    m_link.Answered(true);
    EXPECT_TRUE(m_link.Report(1, 20)) << "that was for the first";
    m_link.Answered(true);
    EXPECT_FALSE(m_link.Report(2, 20));
    m_link.Begin();
    m_link.Answered(true); // to nothing
    EXPECT_TRUE(m_link.Report(0, 30));
    m_link.Detach();
    EXPECT_FALSE(m_link.Report(0, 30)) << "the host is gone";
}

} // namespace
} // namespace nqp2::worker
