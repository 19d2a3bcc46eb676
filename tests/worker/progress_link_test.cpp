// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/progress_link.h"

#include "tests/channel/channel_test.h"

namespace nqp2::worker {
namespace {

class ProgressLinkTest : public test::ChannelTest {};

TEST_F(ProgressLinkTest, AnAnswerIsForTheTransferWhoseReportItAnswers) {
    Connect(4096, 4096, 1000);
    ChannelLine line(test::WorkerEnd(), m_worker);
    ProgressLink link;
    link.Attach(line);
    link.Begin();
    EXPECT_TRUE(link.Report(0, 10));
    EXPECT_TRUE(link.Report(5, 10)) << "not sent: the first is not answered";
    link.Begin(); // the host is still busy with the other one
    EXPECT_TRUE(link.Report(0, 20));
    for (const std::int32_t id : {20003, 20004, 20004}) { // the registration and two reports
        EXPECT_EQ(test::NextId(test::Host(), m_host), id);
    }
    link.Answered(true);
    EXPECT_TRUE(link.Report(1, 20)) << "that was for the first";
    link.Answered(true);
    EXPECT_FALSE(link.Report(2, 20));
    link.Begin();
    link.Answered(true); // to nothing
    EXPECT_TRUE(link.Report(0, 30));
    link.Detach();
    EXPECT_FALSE(link.Report(0, 30)) << "the host is gone";
}

} // namespace
} // namespace nqp2::worker
