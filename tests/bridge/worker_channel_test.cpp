// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Library and worker as threads of one process, over the channel that comes with the library.

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "tests/channel/channel_test.h"

#include <future>

namespace nqp2::bridge {
namespace {

using test::kForEver;
using test::WorkerEnd;
using Bytes = std::vector<unsigned char>;

using Message = std::pair<std::uint32_t, Bytes>;

// The worker's end. A channel is closed by whoever opened it.

ChannelHandle OpenBeside(ChannelHandle parent, std::uint32_t id) {
    return WorkerEnd().OpenSubChannel(parent, id, 0, 0, kForEver, kForEver);
}

/// Nothing happens when the library has closed the channel, or has no room and `abort` is set.
void Send(ChannelHandle channel, std::uint32_t id, const Bytes& bytes, std::int32_t abort = 0) {
    const test::Granted granted = test::Grant(WorkerEnd(), channel, &abort);
    if (granted.status == kChannelDone) {
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(granted.buffer));
        WorkerEnd().SendPacket(channel, id, granted.buffer,
                               static_cast<std::uint32_t>(bytes.size()));
    }
}

/// Number 0 when the library has closed the channel.
Message Take(ChannelHandle channel) {
    const test::Received received = test::Receive(WorkerEnd(), channel);
    if (received.status != kChannelDone) {
        return {};
    }
    const auto* const first = static_cast<const unsigned char*>(received.buffer);
    Message message(received.id, Bytes(first, first + received.length));
    WorkerEnd().ReleasePacket(channel, received.buffer, received.length);
    return message;
}

class WorkerChannelTest : public testing::Test {
protected:
    WorkerChannelTest() {
        EXPECT_TRUE(ListenForHosts(m_folder.Socket()));
        EXPECT_TRUE(UseWorker({.socket = m_folder.Socket()}));
        const SystemInterface own = HostInterface();
        m_global = std::async(std::launch::async, [] {
            ChannelHandle server = WorkerEnd().CreateChannel(20023, 0, 0, kForEver, kForEver);
            const bool isAnnounced = Take(server) == Message(20023, Bytes(10));
            const bool isClosed = Take(server).first == 0;
            WorkerEnd().CloseChannel(&server);
            return isAnnounced && isClosed;
        });
        R8P2Parser_SetSysInterface(own.systemObject, own.table);
    }
    ~WorkerChannelTest() override {
        R8XDCAMParser_ResetSysInterface();
        EXPECT_TRUE(m_global.get()) << "announced, then closed";
        R8P2Parser_SetSysInterface(nullptr, nullptr);
        StopListening();
        LeaveWorker();
    }

    test::SocketFolder m_folder;
    std::future<bool> m_global;
};

/// What a worker makes of requests.
struct Manners {
    const char* name;
    std::uint32_t idShift;  ///< added to the reply's number
    std::size_t replies;    ///< to each request
    std::uint32_t closesAt; ///< the request after which it is gone without a reply
    bool floods;            ///< progress and requests of its own, whose answers it does not read
};

const Manners kManners[] = {
    {"replies", 0, 1, 0, false},
    {"replies to another request", 1, 1, 0, false},
    {"replies twice", 0, 2, 0, false},
    {"goes in the middle of a reply", 0, 1, 20012, false},
    {"floods the other channels", 0, 1, 0, true},
    {"floods and goes", 0, 1, 20012, true},
};

/// A connection to the library's request server, and one request there.
void UseServer(ChannelHandle server) {
    const Bytes record = {0, 0x10, 0, 0, 0, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}; // 4096, 8192
    EXPECT_EQ(Take(server), Message(20023, Bytes(10)));
    Send(server, 50, record);
    ChannelHandle connection = OpenBeside(server, 50);
    EXPECT_EQ(Take(connection), Message(50, record));
    Send(connection, 50, record);
    EXPECT_EQ(Take(server), Message(51, record));
    Send(connection, 502, {1, 2, 3});
    EXPECT_EQ(Take(connection), Message(502, {}));
    Send(connection, 52, {});
    WorkerEnd().CloseChannel(&connection);
}

/// Sends until the library has closed the channel or takes no more.
void Flood(ChannelHandle channel, std::initializer_list<std::uint32_t> ids) {
    for (std::uint32_t i = 0; i < 500; ++i) {
        const Bytes noise(i % 21, static_cast<unsigned char>(i % 2 == 0 ? 0xFF : 0x80 + i));
        Send(channel, ids.begin()[i % ids.size()], noise, 1);
    }
}

void ServeWith(const Manners& manners) {
    ChannelHandle requests = WorkerEnd().CreateChannel(20000, 0, 0, kForEver, kForEver);
    ChannelHandle callback = OpenBeside(requests, 20000);
    ChannelHandle server = OpenBeside(callback, 20023);
    EXPECT_EQ(Take(callback).first, 20003U);
    Send(callback, 20003, {1, 0, 0, 0});
    UseServer(server);
    for (Message request = Take(requests); request.first != 0; request = Take(requests)) {
        if (manners.floods) {
            Flood(callback, {20004, 20003, 20004, 0xFFFFFFFF});
            Flood(server, {50, 51, 52, 20023, 7});
        }
        if (request.first == manners.closesAt) {
            break;
        }
        request.second.back() = 0xFF;
        for (std::size_t i = 0; i < manners.replies; ++i) {
            Send(requests, request.first + manners.idShift, request.second);
        }
    }
    for (ChannelHandle channel : {requests, callback, server}) {
        WorkerEnd().CloseChannel(&channel);
    }
}

void Hear(std::uint32_t, std::uint32_t, std::int32_t&, void*) {}

TEST_F(WorkerChannelTest, AWorkerOfWhateverMannersHoldsUpNoRequestAndNoClose) {
    for (const Manners& manners : kManners) {
        SCOPED_TRACE(manners.name);
        const test::Holdings before = test::Settled();
        std::thread worker([&] { ServeWith(manners); });
        CNQP2Parser parser;
        parser.SetImpCallBack(Hear, this);
        const bool isGood = manners.idShift == 0;
        EXPECT_EQ(parser.StartRTExport(1), isGood ? 1 : 0);
        EXPECT_LT(test::TimeOf([&] { parser.StopRTExport(0, 0); }), test::kSlack);
        EXPECT_LT(test::TimeOf([&] { parser.SetWriteBlockSize(4096); }), test::kSlack);
        EXPECT_LT(test::TimeOf([&] { EXPECT_EQ(parser.Release(), 0); }), test::kSlack);
        worker.join();
        EXPECT_TRUE(test::IsBackTo(before));
    }
}

} // namespace
} // namespace nqp2::bridge
