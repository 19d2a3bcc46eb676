// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include <NQP2ParserU/Channel.h>
#include <NQP2ParserU/R8P2SysInterface.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

/// The request server of a host, and a worker that asks it. As a host the program starts itself as
/// the worker; the library then serves what that asks for on threads of its own. A worker takes the
/// server's channel, asks on it for a connection, and gets an answer to each request on that:
/// request_server

namespace {

using Connection = std::array<std::uint32_t, 4>; ///< sizes and time-outs of the host's side

constexpr std::uint32_t kServer = 20023;
constexpr std::uint32_t kConnect = 50;
constexpr std::uint32_t kConnected = 51;
constexpr std::uint32_t kDisconnect = 52;
constexpr std::uint32_t kMilliseconds = 5000;

/// A channel of the worker's, closed when it goes.
class Line {
public:
    explicit Line(nqp2::ChannelHandle channel) : m_channel(channel) {}
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    ~Line() { Table().CloseChannel(&m_channel); }

    static const nqp2::SysInterfaceTable& Table() { return *nqp2::WorkerInterface().table; }

    /// The channel that the host opens beside this one.
    [[nodiscard]] nqp2::ChannelHandle Beside(std::uint32_t id) const {
        return Table().OpenSubChannel(m_channel, id, 0, 0, kMilliseconds, kMilliseconds);
    }
    [[nodiscard]] bool Send(std::uint32_t id, const Connection& record) const {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        std::int32_t abort = 0;
        constexpr auto kLength = static_cast<std::int32_t>(sizeof(record));
        if (Table().GetSendBuffer(m_channel, &buffer, &capacity, &abort) != nqp2::kChannelDone ||
            capacity < kLength) {
            return false;
        }
        std::memcpy(buffer, record.data(), kLength);
        return Table().SendPacket(m_channel, id, buffer, kLength) == nqp2::kChannelDone;
    }
    /// Whether the next message has that number.
    [[nodiscard]] bool Hear(std::uint32_t id) const {
        std::uint32_t heard = 0;
        void* buffer = nullptr;
        std::uint32_t length = 0;
        std::int32_t abort = 0;
        const bool came = Table().ReceivePacket(m_channel, &heard, &buffer, &length, &abort) ==
                          nqp2::kChannelDone;
        if (came) {
            std::fprintf(stderr, "the worker hears %u, %u bytes\n", heard, length);
            Table().ReleasePacket(m_channel, buffer, length);
        }
        return came && heard == id;
    }

private:
    nqp2::ChannelHandle m_channel;
};

bool AskHost() {
    constexpr std::uint32_t kRequest = 500;
    constexpr Connection kRecord = {10240, 10240, kMilliseconds, kMilliseconds};
    const Line server(Line::Table().CreateChannel(kServer, 0, 0, kMilliseconds, kMilliseconds));
    if (!server.Hear(kServer) || !server.Send(kConnect, kRecord)) {
        return false;
    }
    const Line connection(server.Beside(kConnect));
    // The host says which connection it is, and hears it again.
    return connection.Hear(kConnect) && connection.Send(kConnect, kRecord) &&
           server.Hear(kConnected) && connection.Send(kRequest, kRecord) &&
           connection.Hear(kRequest) && connection.Send(kDisconnect, kRecord);
}

int RunWorker(int line) {
    const nqp2::WorkerStatus listening = nqp2::ListenForHosts({.hostDescriptor = line});
    const bool done = listening && AskHost();
    std::fprintf(stderr, "the worker was %s\n", done ? "served" : "not served");
    nqp2::StopListening();
    return done ? 0 : 1;
}

int RunHost(const char* program) {
    const nqp2::WorkerStatus started = nqp2::UseWorker({.program = program});
    if (!started) {
        std::fprintf(stderr, "the worker does not start: %s\n", started.reason.c_str());
        return 1;
    }
    const nqp2::SystemInterface own = nqp2::HostInterface();
    R8P2Parser_SetSysInterface(own.systemObject, own.table); // the server begins
    std::puts("serving; the return key ends it");
    std::getchar();
    R8XDCAMParser_ResetSysInterface(); // and ends
    nqp2::LeaveWorker();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const bool isWorker = argc > 2 && std::string_view(argv[argc - 2]) == "--host";
    return isWorker ? RunWorker(std::atoi(argv[argc - 1])) : RunHost(argv[0]);
}
