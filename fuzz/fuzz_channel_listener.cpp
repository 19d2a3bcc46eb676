// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A stranger at the worker's socket: any first packets, with good, bad and no descriptors, to a
// listener as it runs. fuzz/hostile_packet.h has the form of the input.

#include "channel/packet.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/hostile_packet.h"
#include "NQP2ParserU/Channel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace nqp2::fuzz {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMaxSteps = 4;
constexpr std::uint32_t kChannelId = 7;

/// A worker's socket in a folder of its own.
class Socket {
public:
    Socket() {
        std::string folder = fs::temp_directory_path() / "nqp2-fuzz-XXXXXX";
        Require(mkdtemp(folder.data()) != nullptr, "there is a folder");
        m_folder = folder;
        Require(bool(ListenForHosts((m_folder / "s").string())), "the worker listens");
    }
    ~Socket() {
        StopListening();
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    [[nodiscard]] platform::Descriptor Connect() const {
        platform::Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = m_folder / "s";
        Require(path.size() < sizeof(address.sun_path), "the path is short");
        std::memcpy(address.sun_path, path.data(), path.size());
        Require(connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address),
                        sizeof(address)) == 0,
                "whatever strangers do, the worker listens on");
        return socket;
    }

private:
    fs::path m_folder;
};

std::ptrdiff_t OpenDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// The listener's thread lets go of a visitor a little after that has gone.
bool AreLetGo(std::ptrdiff_t before) {
    for (int patience = 0; patience < 2000; ++patience) {
        if (OpenDescriptors() <= before) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

/// Takes a channel as a worker does, if the stranger has made one.
void Take() {
    const SysInterfaceTable& table = *WorkerInterface().table;
    ChannelHandle channel = table.CreateChannel(kChannelId, 1, 1, 0, 2);
    if (channel == 0) {
        return;
    }
    std::uint32_t id = 0;
    std::uint32_t length = 0;
    void* buffer = nullptr;
    if (table.ReceivePacket(channel, &id, &buffer, &length, nullptr) == kChannelDone) {
        std::memset(buffer, 0, length);
    }
    table.CloseChannel(&channel);
}

} // namespace

void TestInput(Input input) {
    static const Socket worker;
    static const bool isWarm = [] { // what is made once is made
        constexpr std::array<std::uint8_t, kPacketStep> kWithDescriptor = {0, 0, 0, 0, 0, 1};
        SendHostilePacket(worker.Connect().Get(), kWithDescriptor);
        Take();
        return AreLetGo(OpenDescriptors());
    }();
    Require(isWarm, "a listener runs");
    const std::ptrdiff_t before = OpenDescriptors();
    {
        const platform::Descriptor visitor = worker.Connect();
        const Input steps = input.first(std::min(input.size(), kMaxSteps * kPacketStep));
        for (std::size_t at = 0; at + kPacketStep <= steps.size(); at += kPacketStep) {
            SendHostilePacket(visitor.Get(), steps.subspan(at).first<kPacketStep>());
        }
        Take();
    }
    Require(AreLetGo(before), "of a visitor that has gone nothing is kept open");
}

} // namespace nqp2::fuzz
