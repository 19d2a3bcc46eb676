// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "tests/channel/channel_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <set>

namespace nqp2::worker {
namespace {

using testing::ElementsAreArray;

/// What passed between a host's request servers and the worker: "<" came from it, ">" went to it.
class Traffic {
public:
    /// Our channel, looked at from the side; nothing seen yet.
    static SysInterfaceTable Table() {
        All().seen.clear();
        SysInterfaceTable table = *HostInterface().table;
        table.SendPacket = [](ChannelHandle channel, std::uint32_t id, void* buffer,
                              std::uint32_t length) {
            Note('>', id, length);
            return HostInterface().table->SendPacket(channel, id, buffer, length);
        };
        table.ReceivePacket = [](ChannelHandle channel, std::uint32_t* id, void** buffer,
                                 std::uint32_t* length, std::int32_t* abortFlag) {
            const std::int32_t status =
                HostInterface().table->ReceivePacket(channel, id, buffer, length, abortFlag);
            if (status == kChannelDone) {
                Note('<', *id, *length);
            }
            return status;
        };
        return table;
    }
    static std::vector<std::string> Seen() {
        const std::lock_guard guard(All().lock);
        return All().seen;
    }

private:
    static void Note(char way, std::uint32_t id, std::uint32_t length) {
        static const std::set<std::uint32_t> kIds = {50, 51, 52, 5001, 20023};
        const std::lock_guard guard(All().lock);
        if (kIds.count(id) != 0) {
            All().seen.push_back(way + std::to_string(id) + ':' + std::to_string(length));
        }
    }

    struct Notes {
        std::mutex lock;
        std::vector<std::string> seen;
    };
    /// The functions of a table have no object of their own.
    static Notes& All() {
        static Notes notes;
        return notes;
    }
};

const std::vector<std::string> kVisit = {">20023:10", "<50:16",   ">50:16",  "<50:16",
                                         ">51:16",    "<5001:16", ">5001:0", "<52:16"};

TEST(HostServices, TheWorkerVisitsEveryRequestServerOfAHost) {
    const test::SocketFolder folder;
    ASSERT_TRUE(UseWorker({.program = NQP2_WORKER_PROGRAM, .socket = folder.Socket()}));
    const test::Holdings before = test::Settled();
    SysInterfaceTable table = Traffic::Table();
    const auto visits = [](std::size_t count) {
        return test::Eventually([&] { return Traffic::Seen().size() >= count * kVisit.size(); });
    };

    R8P2Parser_SetSysInterface(HostInterface().systemObject, &table);
    EXPECT_TRUE(visits(1));
    EXPECT_THAT(Traffic::Seen(), ElementsAreArray(kVisit));
    EXPECT_TRUE(test::Eventually([&] { return test::HeldBy().threads == before.threads + 1; }))
        << "the connection has ended, the server goes on";

    CNQP2Parser parser;
    EXPECT_EQ(parser.Init(), 0);
    EXPECT_TRUE(visits(2)) << "the parser has a server of its own";
    std::vector<std::string> seen = Traffic::Seen();
    seen.erase(seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(kVisit.size()));
    EXPECT_THAT(seen, ElementsAreArray(kVisit));
    parser.Release();

    R8XDCAMParser_ResetSysInterface();
    R8P2Parser_SetSysInterface(nullptr, nullptr);
    EXPECT_TRUE(test::IsBackTo(before));
    LeaveWorker();
}

} // namespace
} // namespace nqp2::worker
