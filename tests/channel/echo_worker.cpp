// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The worker of the tests: sends back what it gets. With "--deaf" it never listens.

#include "NQP2ParserU/Channel.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <unistd.h>

namespace nqp2::test {
namespace {

constexpr std::uint32_t kForEver = 0xFFFFFFFF;

const SysInterfaceTable& Table() {
    return *WorkerInterface().table;
}

void Echo(ChannelHandle channel, std::uint32_t id, const void* bytes, std::uint32_t length) {
    void* buffer = nullptr;
    std::int32_t capacity = 0;
    if (Table().GetSendBuffer(channel, &buffer, &capacity, nullptr) == kChannelDone &&
        length <= static_cast<std::uint32_t>(capacity)) {
        std::memcpy(buffer, bytes, length);
        Table().SendPacket(channel, id, buffer, length);
    }
}

void Serve(ChannelHandle channel) {
    std::uint32_t id = 0;
    void* bytes = nullptr;
    std::uint32_t length = 0;
    while (Table().ReceivePacket(channel, &id, &bytes, &length, nullptr) == kChannelDone) {
        Echo(channel, id, bytes, length);
        Table().ReleasePacket(channel, bytes, length);
    }
    Table().CloseChannel(&channel);
}

int Main(int argc, char** argv) {
    if (argc > 1 && std::string(argv[1]) == "--deaf") {
        pause();
    }
    ListenSettings settings;
    settings.whenAlone = [] { kill(getpid(), SIGTERM); };
    for (int i = 1; i + 1 < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--host") {
            settings.hostDescriptor = std::atoi(argv[i + 1]);
        } else if (name == "--socket") {
            settings.socket = argv[i + 1];
        }
    }
    if (!ListenForHosts(settings)) {
        return 2;
    }
    while (const ChannelHandle channel = Table().CreateChannel(20000, 0, 0, kForEver, kForEver)) {
        std::thread(Serve, channel).detach();
    }
    return 0;
}

} // namespace
} // namespace nqp2::test

int main(int argc, char** argv) {
    return nqp2::test::Main(argc, argv);
}
