// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures the channel between two processes beside the least that the same work takes: a request
// beside two futex wake-ups, filled messages beside a copy and a read in one process.
// bench/run_bench.py runs this program and works out the ratios.

#include "bench/measure.h"
#include "bench/two_processes.h"
#include "NQP2ParserU/Channel.h"

#include <atomic>
#include <benchmark/benchmark.h>
#include <cstdint>
#include <cstring>
#include <linux/futex.h>
#include <stdlib.h>
#include <string>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace nqp2::bench {
namespace {

constexpr std::uint32_t kChannel = 20000;
constexpr std::uint32_t kForEver = 0xFFFFFFFF;
constexpr std::uint32_t kReply = 12; ///< bytes of an answer
constexpr std::uint32_t kSmall = 576000;
constexpr std::uint32_t kLarge = 45360000;

/// A word in shared memory that two processes pass to and fro.
class FutexTurn {
public:
    void Pass(std::uint32_t turn) {
        m_turn.store(turn, std::memory_order_release);
        syscall(SYS_futex, &m_turn, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }
    void Await(std::uint32_t turn) {
        for (std::uint32_t seen = 0; (seen = m_turn.load(std::memory_order_acquire)) != turn;) {
            syscall(SYS_futex, &m_turn, FUTEX_WAIT, seen, nullptr, nullptr, 0);
        }
    }

private:
    std::atomic<std::uint32_t> m_turn = 0;
};

void FutexFloor(benchmark::State& state) {
    void* const memory =
        mmap(nullptr, sizeof(FutexTurn), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto& turn = *new (memory) FutexTurn;
    const pid_t child = RunBeside([&] {
        while (true) {
            turn.Await(1);
            turn.Pass(2);
        }
    });
    for (auto _ : state) {
        turn.Pass(1);
        turn.Await(2);
    }
    End(child);
    munmap(memory, sizeof(FutexTurn));
}

void CopyFloor(benchmark::State& state, std::uint32_t length) {
    const std::vector<char> source(length, 'x');
    std::vector<char> target(length);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), length);
        benchmark::DoNotOptimize(Sum(target.data(), length));
    }
}

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
        const std::string socket = m_folder + "/socket";
        m_worker = RunBeside([&] { Serve(socket); });
        for (int i = 0; i < 1000 && !UseWorker({.socket = socket}); ++i) {
            usleep(1000);
        }
        m_channel = Table().CreateChannel(kChannel, size, size, timeOut, timeOut);
    }
    ~Conversation() {
        Table().CloseChannel(&m_channel);
        End(m_worker);
        unlink((m_folder + "/socket").c_str());
        rmdir(m_folder.c_str());
    }
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    static const SysInterfaceTable& Table() { return *HostInterface().table; }
    [[nodiscard]] ChannelHandle Channel() const { return m_channel; }

    /// False when any step failed.
    bool Ask(const void* bytes, std::uint32_t length) const {
        std::int32_t capacity = 0;
        std::uint32_t id = 0;
        std::uint32_t replied = 0;
        void* request = nullptr;
        void* reply = nullptr;
        if (Table().GetSendBuffer(m_channel, &request, &capacity, nullptr) != kChannelDone) {
            return false;
        }
        std::memcpy(request, bytes, length);
        return Table().SendPacket(m_channel, 1, request, length) == kChannelDone &&
               Table().ReceivePacket(m_channel, &id, &reply, &replied, nullptr) == kChannelDone &&
               replied == kReply &&
               Table().ReleasePacket(m_channel, reply, replied) == kChannelDone;
    }

private:
    static std::string MakeFolder() {
        std::string folder = "/tmp/nqp2-bench-XXXXXX";
        return mkdtemp(folder.data()) != nullptr ? folder : std::string();
    }

    std::string m_folder = MakeFolder();
    pid_t m_worker = 0;
    ChannelHandle m_channel = 0;
};

void Request(benchmark::State& state, std::uint32_t size, std::uint32_t length) {
    const Conversation conversation(size);
    const std::vector<char> source(length, 'x');
    // The first write to each page of new memory costs many times a later one.
    conversation.Ask(source.data(), length);
    for (auto _ : state) {
        if (!conversation.Ask(source.data(), length)) {
            state.SkipWithError("a request failed");
            return;
        }
    }
}

/// Processor time that a thread takes in a second in which it waits and watches an abort flag.
void Idle(benchmark::State& state) {
    constexpr std::uint32_t kSecond = 1000;
    const Conversation conversation(4096, kSecond);
    std::int32_t abortFlag = 0;
    std::uint32_t id = 0;
    std::uint32_t length = 0;
    void* buffer = nullptr;
    for (auto _ : state) {
        const double before = ProcessorSeconds();
        const std::int32_t status = Conversation::Table().ReceivePacket(
            conversation.Channel(), &id, &buffer, &length, &abortFlag);
        state.SetIterationTime(ProcessorSeconds() - before);
        if (status != kChannelTimedOut) {
            state.SkipWithError("the wait did not end in time");
            return;
        }
    }
}

void RegisterAll(const Arguments& /*none*/) {
    RunOn(0);
    Register("channel/futex_floor", FutexFloor);
    Register("channel/request", [](benchmark::State& state) { Request(state, 4096, 8); });
    Register("channel/copy_floor_small", [](benchmark::State& state) { CopyFloor(state, kSmall); });
    Register("channel/small", [](benchmark::State& state) { Request(state, kSmall, kSmall); });
    Register("channel/copy_floor_large", [](benchmark::State& state) { CopyFloor(state, kLarge); });
    Register("channel/large", [](benchmark::State& state) { Request(state, kLarge, kLarge); });
    benchmark::RegisterBenchmark("channel/idle", Idle)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1);
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    return nqp2::bench::Run(argc, argv, 0, "", nqp2::bench::RegisterAll);
}
