// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Library and worker as threads of one process, over the channel that comes with the library.

#include "bridge/messages.h"
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
    ~WorkerChannel() { Close(); }
    WorkerChannel(const WorkerChannel&) = delete;
    WorkerChannel& operator=(const WorkerChannel&) = delete;

    void Close() { WorkerEnd().CloseChannel(&m_handle); }
    [[nodiscard]] bool IsOpen() const { return m_handle != 0; }
    [[nodiscard]] ChannelHandle Beside(std::uint32_t id) const {
        return WorkerEnd().OpenSubChannel(m_handle, id, 0, 0, kNoTimeout, kNoTimeout);
    }

    void Send(std::uint32_t id, const Bytes& bytes) const {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        ASSERT_EQ(WorkerEnd().GetSendBuffer(m_handle, &buffer, &capacity, nullptr), 1);
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(buffer));
        ASSERT_EQ(
            WorkerEnd().SendPacket(m_handle, id, buffer, static_cast<std::uint32_t>(bytes.size())),
            1);
    }
    /// A buffer for a message, if the channel has one at once.
    bool Grant(void*& buffer, std::int32_t& capacity, std::int32_t& abort) const {
        return WorkerEnd().GetSendBuffer(m_handle, &buffer, &capacity, &abort) == kChannelDone;
    }
    void SendGranted(std::uint32_t id, void* buffer, std::size_t length) const {
        WorkerEnd().SendPacket(m_handle, id, buffer, static_cast<std::uint32_t>(length));
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
    /// Sends a message and waits for the answer to it.
    [[nodiscard]] Bytes Ask(std::uint32_t id, const Bytes& bytes, std::uint32_t answerId) const {
        Send(id, bytes);
        const auto answer = Receive();
        EXPECT_TRUE(answer && answer->first == answerId) << answerId;
        return answer ? answer->second : Bytes();
    }

private:
    ChannelHandle m_handle;
};

/// Serves one parser: three messages of progress for each import, a connection to the request
/// server, and one for all others. CloseAllFile is the end of it.
class Worker {
public:
    Worker() : m_thread([this] { Run(); }) {}
    ~Worker() { m_thread.join(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    std::vector<std::int32_t> aborts; ///< what the host answered to each message of progress
    Bytes served = {1};               ///< the library's answer to a request of the worker
    Bytes connected;                  ///< message 51

private:
    void Run() {
        const WorkerChannel requests(
            WorkerEnd().CreateChannel(20000, 0, 0, kNoTimeout, kNoTimeout));
        WorkerChannel callback(requests.Beside(20000));
        const WorkerChannel server(callback.Beside(20023));
        EXPECT_EQ(server.Receive()->second.size(), 10U) << "the announcement";
        EXPECT_EQ(callback.Receive()->first, 20003U);
        callback.Send(20003, {1, 0, 0, 0});
        UseServer(server);
        while (auto request = requests.Receive()) {
            auto& [id, bytes] = *request;
            if (id == 20018) {
                return; // as if it were killed
            }
            if (id == 20005) {
                Import(callback);
            }
            bytes[bytes.size() - 4] = 1;
            requests.Send(id, bytes);
        }
    }

    void Import(const WorkerChannel& callback) {
        for (unsigned char position = 1; position <= 3; ++position) {
            Bytes image(16);
            image[0] = position;
            image[4] = 3;
            aborts.push_back(callback.Ask(20004, image, 20004)[8]);
        }
    }

    void UseServer(const WorkerChannel& server) {
        Bytes record(16);
        record[1] = 0x10; // 4096
        record[5] = 0x20; // 8192
        server.Send(50, record);
        const WorkerChannel connection(server.Beside(50));
        EXPECT_EQ(connection.Receive()->second, record);
        connection.Send(50, record);
        connected = server.Receive()->second;
        served = connection.Ask(502, {1, 2, 3}, 502);
        connection.Send(52, {});
    }

    std::thread m_thread;
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

void AbortAtTwo(std::uint32_t position, std::uint32_t total, std::int32_t& abort, void* context) {
    *static_cast<std::uint32_t*>(context) += total;
    abort = position == 2 ? 1 : abort;
}

TEST_F(WorkerChannelTest, RequestsProgressAndTheWorkersOwnRequestsTravel) {
    std::uint32_t totals = 0;
    Worker worker;
    CNQP2Parser parser;
    parser.SetImpCallBack(AbortAtTwo, &totals);
    stu_R8P2TransInfo info;
    info.text1 = L"0001AA";
    EXPECT_EQ(parser.ImportFile(info), 0);
    EXPECT_EQ(info.text1, L"0001AA");
    EXPECT_EQ(totals, 9U);
    EXPECT_EQ(worker.aborts, (std::vector<std::int32_t>{0, 1, 1}));
    Bytes large(4147200, 0x5A);
    EXPECT_EQ(parser.AddRTExportAVData(2, large.data(), 4147200, large.data(), 4147200, 0), 1);
    EXPECT_EQ(worker.connected[5], 0x20);
    EXPECT_TRUE(worker.served.empty());
    EXPECT_EQ(parser.Release(), 0);
}

TEST_F(WorkerChannelTest, AWorkerThatIsGoneFailsRequestsAndHoldsNothingUp) {
    Worker worker;
    CNQP2Parser parser;
    EXPECT_EQ(parser.StartRTExport(1), 1);
    parser.CloseAllFile();
    EXPECT_EQ(parser.CreateIconBmp(L"", L"", nullptr, {}), -1);
    EXPECT_EQ(parser.Release(), 0);
}

/// What a hostile worker makes of a request.
struct Mischief {
    const char* name;
    std::uint32_t idShift;  ///< added to the reply's number
    std::size_t replies;    ///< to each request
    std::uint32_t closesAt; ///< the request after which it is gone without a reply
    bool floods;            ///< progress and requests of its own, whose answers it does not read
};

const Mischief kMischief[] = {
    {"replies to another request", 1, 1, 0, false},
    {"replies twice", 0, 2, 0, false},
    {"goes in the middle of a reply", 0, 1, 20012, false},
    {"floods the other channels", 0, 1, 0, true},
    {"floods and goes", 0, 1, 20012, true},
};

/// Sends until the library has closed the channel or takes no more.
void Flood(const WorkerChannel& channel, std::initializer_list<std::uint32_t> ids) {
    for (std::uint32_t i = 0; i < 500; ++i) {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        std::int32_t abort = 1; // waits for nobody
        const Bytes noise(i % 21, static_cast<unsigned char>(i % 2 == 0 ? 0xFF : 0x80 + i));
        if (channel.Grant(buffer, capacity, abort)) {
            std::copy(noise.begin(), noise.end(), static_cast<unsigned char*>(buffer));
            channel.SendGranted(ids.begin()[i % ids.size()], buffer, noise.size());
        }
    }
}

void ServeWith(const Mischief& mischief) {
    const WorkerChannel requests(WorkerEnd().CreateChannel(20000, 0, 0, kNoTimeout, kNoTimeout));
    WorkerChannel callback(requests.Beside(20000));
    WorkerChannel server(callback.Beside(20023));
    EXPECT_EQ(callback.Receive()->first, 20003U);
    callback.Send(20003, {1, 0, 0, 0});
    while (auto request = requests.Receive()) {
        if (mischief.floods) {
            Flood(callback, {20004, 20003, 20004, 0xFFFFFFFF});
            Flood(server, {50, 51, 52, 20023, 7});
        }
        if (request->first == mischief.closesAt) {
            return;
        }
        for (std::size_t i = 0; i < mischief.replies; ++i) {
            void* buffer = nullptr;
            std::int32_t capacity = 0;
            std::int32_t waits = 0;
            if (requests.Grant(buffer, capacity, waits)) { // else the library has closed it
                request->second.back() = 0xFF;
                std::copy(request->second.begin(), request->second.end(),
                          static_cast<unsigned char*>(buffer));
                requests.SendGranted(request->first + mischief.idShift, buffer,
                                     request->second.size());
            }
        }
    }
}

TEST_F(WorkerChannelTest, AHostileWorkerFailsRequestsAndHoldsUpNoClose) {
    for (const Mischief& mischief : kMischief) {
        SCOPED_TRACE(mischief.name);
        const test::Holdings before = test::Settled();
        std::thread worker([&] { ServeWith(mischief); });
        std::uint32_t heard = 0;
        CNQP2Parser parser;
        parser.SetImpCallBack(AbortAtTwo, &heard);
        const bool isGood = mischief.idShift == 0;
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
