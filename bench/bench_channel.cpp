// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the channel between two processes beside the least that two processes need for the same:
// a copy into memory of both, a futex wake-up, a read, and a wake-up back.
//
//     bench_channel PROCESSORS      (1 or 2, for both processes together)

#include "bench/measure.h"
#include "bench/two_processes.h"
#include "NQP2ParserU/Channel.h"
#include "platform/descriptor.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>
#include <vector>

namespace nqp2::bench {
namespace {

constexpr std::uint32_t kChannel = 20000;
constexpr std::uint32_t kForEver = 0xFFFFFFFF;
constexpr std::uint32_t kReply = 12;      ///< bytes of an answer
constexpr std::uint32_t kSmallest = 4096; ///< a slot for the smallest requests
constexpr std::uint32_t kRequest = 8;

/// Answers each message with a short one, after reading all of it.
[[noreturn]] void Serve(const std::string& socket) {
    const SysInterfaceTable& table = *WorkerInterface().table;
    if (!ListenForHosts(socket)) {
        _exit(1);
    }
    while (true) {
        ChannelHandle channel = table.CreateChannel(kChannel, 0, 0, kForEver, kForEver);
        std::uint32_t id = 0;
        std::uint32_t length = 0;
        std::int32_t capacity = 0;
        void* request = nullptr;
        void* reply = nullptr;
        while (table.ReceivePacket(channel, &id, &request, &length, nullptr) == kChannelDone) {
            const std::uint64_t sum = Sum(request, length);
            table.GetSendBuffer(channel, &reply, &capacity, nullptr);
            std::memcpy(reply, &sum, sizeof(sum));
            table.SendPacket(channel, id, reply, kReply);
            table.ReleasePacket(channel, request, length);
        }
        table.CloseChannel(&channel);
    }
}

/// A channel to a worker process of this program's own.
class Conversation {
public:
    explicit Conversation(std::uint32_t size, std::uint32_t timeOut = kForEver) {
        const std::string socket = m_folder.Path("socket");
        m_worker = RunBeside([&] { Serve(socket); });
        for (int i = 0; i < 1000 && !UseWorker({.socket = socket}); ++i) {
            usleep(1000);
        }
        m_channel = Table().CreateChannel(kChannel, size, size, timeOut, timeOut);
    }
    ~Conversation() {
        Table().CloseChannel(&m_channel);
        End(m_worker);
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    static const SysInterfaceTable& Table() { return *HostInterface().table; }
    [[nodiscard]] ChannelHandle Channel() const { return m_channel; }

    void Ask(const void* bytes, std::uint32_t length) const {
        std::int32_t capacity = 0;
        std::uint32_t id = 0;
        std::uint32_t replied = 0;
        void* request = nullptr;
        void* reply = nullptr;
        Require(Table().GetSendBuffer(m_channel, &request, &capacity, nullptr) == kChannelDone,
                "no room for a request");
        std::memcpy(request, bytes, length);
        Require(Table().SendPacket(m_channel, 1, request, length) == kChannelDone &&
                    Table().ReceivePacket(m_channel, &id, &reply, &replied, nullptr) ==
                        kChannelDone &&
                    replied == kReply &&
                    Table().ReleasePacket(m_channel, reply, replied) == kChannelDone,
                "a request failed");
    }

private:
    ScratchFolder m_folder;
    pid_t m_worker = 0;
    ChannelHandle m_channel = 0;
};

void MeasureMessages(Bench& bench, const std::string& processors, std::uint32_t length) {
    const std::string name = std::to_string(length) + '/' + processors;
    if (!bench.Wants("bare/" + name)) {
        return;
    }
    const std::vector<char> source(length, 'x');
    BareTalk bare(length);
    const Conversation conversation(length < kSmallest ? kSmallest : length);
    bench.Together(Clock::Wall,
                   {bare.Measured("bare/" + name, source.data()),
                    {"ours/" + name, [&] { conversation.Ask(source.data(), length); }}});
}

/// Processor time that a thread takes in a second in which it waits and watches an abort flag.
double IdleSecond() {
    constexpr std::uint32_t kSecond = 1000;
    const Conversation conversation(kSmallest, kSecond);
    std::int32_t abortFlag = 0;
    std::uint32_t id = 0;
    std::uint32_t length = 0;
    void* buffer = nullptr;
    const double before = Now(Clock::Processor);
    const std::int32_t status = Conversation::Table().ReceivePacket(conversation.Channel(), &id,
                                                                    &buffer, &length, &abortFlag);
    const double taken = Now(Clock::Processor) - before;
    Require(status == kChannelTimedOut, "the wait did not end in time");
    return taken;
}

/// The same of one that does nothing else than to wait for three silent descriptors (a packet, the
/// other side's end, the bell of an abort), and wakes as often as a wait must look at the flag of a
/// host.
double BareIdleSecond() {
    constexpr int kSlice = 20; ///< milliseconds
    constexpr int kSlices = 50;
    std::array<platform::Descriptor, 3> silent;
    std::array<pollfd, silent.size()> watched = {};
    for (std::size_t i = 0; i < silent.size(); ++i) {
        silent[i] = platform::Descriptor(eventfd(0, EFD_CLOEXEC));
        Require(static_cast<bool>(silent[i]), "no descriptor to wait for");
        watched[i] = {silent[i].Get(), POLLIN, 0};
    }
    const double before = Now(Clock::Processor);
    for (int i = 0; i < kSlices; ++i) {
        Require(poll(watched.data(), watched.size(), kSlice) == 0, "a wait did not end in time");
    }
    return Now(Clock::Processor) - before;
}

/// What a second takes when nothing disturbs it: the least of some.
double LeastOf(double (*second)()) {
    constexpr int kSeconds = 3;
    double least = second();
    for (int i = 1; i < kSeconds; ++i) {
        least = std::min(least, second());
    }
    return least;
}

void MeasureAll(Bench& bench) {
    const std::string& processors = bench.Arguments().front();
    UseProcessors(std::atoi(processors.c_str()));
    MeasureMessages(bench, processors, kRequest);
    for (const std::uint32_t length : kFrames) {
        MeasureMessages(bench, processors, length);
    }
    bench.Value("idle/" + processors, [] { return LeastOf(IdleSecond); });
    bench.Value("bare_idle/" + processors, [] { return LeastOf(BareIdleSecond); });
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Main(argc, argv, 1, "PROCESSORS", nqp2::bench::MeasureAll);
}
