// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Library and worker as threads of one process, over the channel that comes with the library.

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "tests/channel/channel_test.h"

#include <future>
#include <optional>

namespace nqp2::bridge {
namespace {

using test::WorkerEnd;
using Bytes = std::vector<unsigned char>;

constexpr std::uint32_t kNoTimeout = 0xFFFFFFFF;

/// The worker's end of one channel.
class WorkerChannel {
public:
    explicit WorkerChannel(ChannelHandle handle) : m_handle(handle) {}
    ~WorkerChannel() { WorkerEnd().CloseChannel(&m_handle); }
    WorkerChannel(const WorkerChannel&) = delete;
    WorkerChannel& operator=(const WorkerChannel&) = delete;

    [[nodiscard]] ChannelHandle Beside(std::uint32_t id) const {
        return WorkerEnd().OpenSubChannel(m_handle, id, 0, 0, kNoTimeout, kNoTimeout);
    }
    /// False when the library has closed the channel, or has no room and `abort` is set.
    bool Send(std::uint32_t id, const Bytes& bytes, std::int32_t abort = 0) const {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        if (WorkerEnd().GetSendBuffer(m_handle, &buffer, &capacity, &abort) != kChannelDone) {
            return false;
        }
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(buffer));
        return WorkerEnd().SendPacket(m_handle, id, buffer,
                                      static_cast<std::uint32_t>(bytes.size())) == kChannelDone;
    }
    /// Nothing when the library has closed the channel.
    [[nodiscard]] std::optional<std::pair<std::uint32_t, Bytes>> Receive() const {
        const test::Received received = test::Receive(WorkerEnd(), m_handle);
        if (received.status != kChannelDone) {
            return std::nullopt;
        }
        const auto* first = static_cast<const unsigned char*>(received.buffer);
        auto message = std::pair(received.id, Bytes(first, first + received.length));
        WorkerEnd().ReleasePacket(m_handle, received.buffer, received.length);
        return message;
    }

private:
    ChannelHandle m_handle;
};

class WorkerChannelTest : public testing::Test {
protected:
    WorkerChannelTest() {
        EXPECT_TRUE(ListenForHosts(m_folder.Socket()));
        EXPECT_TRUE(UseWorker({.socket = m_folder.Socket()}));
        const SystemInterface own = HostInterface();
        m_global = std::async(std::launch::async, [] {
            const WorkerChannel server(
                WorkerEnd().CreateChannel(20023, 0, 0, kNoTimeout, kNoTimeout));
            const std::size_t announced = server.Receive()->second.size();
            return announced == 10 && !server.Receive();
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
void UseServer(const WorkerChannel& server) {
    Bytes record(16);
    record[1] = 0x10; // 4096
    record[5] = 0x20; // 8192
    EXPECT_EQ(server.Receive()->second.size(), 10U) << "the announcement";
    server.Send(50, record);
    const WorkerChannel connection(server.Beside(50));
    EXPECT_EQ(connection.Receive()->second, record);
    connection.Send(50, record);
    EXPECT_EQ(server.Receive()->second, record);
    connection.Send(502, {1, 2, 3});
    const auto answer = connection.Receive();
    EXPECT_TRUE(answer && answer->first == 502 && answer->second.empty());
    connection.Send(52, {});
}

/// Sends until the library has closed the channel or takes no more.
void Flood(const WorkerChannel& channel, std::initializer_list<std::uint32_t> ids) {
    for (std::uint32_t i = 0; i < 500; ++i) {
        const Bytes noise(i % 21, static_cast<unsigned char>(i % 2 == 0 ? 0xFF : 0x80 + i));
        channel.Send(ids.begin()[i % ids.size()], noise, 1);
    }
}

void ServeWith(const Manners& manners) {
    const WorkerChannel requests(WorkerEnd().CreateChannel(20000, 0, 0, kNoTimeout, kNoTimeout));
    const WorkerChannel callback(requests.Beside(20000));
    const WorkerChannel server(callback.Beside(20023));
    EXPECT_EQ(callback.Receive()->first, 20003U);
    callback.Send(20003, {1, 0, 0, 0});
    UseServer(server);
    while (auto request = requests.Receive()) {
        if (manners.floods) {
            Flood(callback, {20004, 20003, 20004, 0xFFFFFFFF});
            Flood(server, {50, 51, 52, 20023, 7});
        }
        if (request->first == manners.closesAt) {
            return;
        }
        request->second.back() = 0xFF;
        for (std::size_t i = 0; i < manners.replies; ++i) {
            requests.Send(request->first + manners.idShift, request->second);
        }
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
