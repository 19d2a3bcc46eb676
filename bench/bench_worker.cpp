// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Measures what a host sees of the worker through the parser: requests and frames to a process that
// only reads them (the floors are bench_channel's), the import of a large clip by the worker itself
// beside cp and a checksum of both files, and the processor time of a parser that does nothing.
//
//     bench_worker [--benchmark_...] NQP2-WORKER FOLDER [MEGABYTES]

#include "bench/measure.h"
#include "bench/two_processes.h"
#include "bridge/messages.h"
#include "NQP2ParserU/Channel.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "NQP2ParserU/R8P2TransInfo.h"
#include "NQP2ParserU/ReadyParser.h"
#include "NQP2ParserU/TextBytes.h"
#include "platform/descriptor.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <vector>
#include <xxhash.h>

namespace nqp2::bench {
namespace {

constexpr std::uint32_t kForEver = 0xFFFFFFFF;
constexpr std::uint32_t kFrame = 576000;
constexpr std::uint32_t kLargeFrame = 45300000; ///< with its message nearly what a channel holds
constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20U;

std::string MakeFolder() {
    std::string folder = "/tmp/nqp2-bench-XXXXXX";
    return mkdtemp(folder.data()) != nullptr ? folder : std::string();
}

std::int32_t AnswerFrame(unsigned char* request, std::int32_t length, unsigned char* reply,
                         std::int32_t capacity) {
    bridge::AVDataMessage message;
    message.Restore(request, length);
    benchmark::DoNotOptimize(Sum(message.data1, message.length1));
    message.data1 = message.data2 = nullptr;
    message.length1 = message.length2 = 0;
    message.result = 1;
    return message.Save(reply, capacity);
}

std::int32_t AnswerValue(unsigned char* request, std::int32_t length, unsigned char* reply,
                         std::int32_t capacity) {
    bridge::ValueMessage message;
    message.Restore(request, length);
    message.result = 1;
    return message.Save(reply, capacity);
}

/// The channel beside the requests on which a parser asks, as soon as it is made, to be told of
/// progress.
ChannelHandle RegisterProgress(const SysInterfaceTable& table, ChannelHandle requests) {
    const ChannelHandle callbacks =
        table.OpenSubChannel(requests, bridge::kProxyChannelId, 0, 0, kForEver, kForEver);
    std::uint32_t id = 0;
    std::uint32_t length = 0;
    std::int32_t capacity = 0;
    void* buffer = nullptr;
    bridge::ResultMessage answer;
    answer.result = 1;
    if (table.ReceivePacket(callbacks, &id, &buffer, &length, nullptr) == kChannelDone) {
        table.ReleasePacket(callbacks, buffer, length);
        table.GetSendBuffer(callbacks, &buffer, &capacity, nullptr);
        const std::int32_t saved = answer.Save(static_cast<unsigned char*>(buffer), capacity);
        table.SendPacket(callbacks, id, buffer, static_cast<std::uint32_t>(saved));
    }
    return callbacks;
}

/// Answers requests with success, after reading all of a frame.
[[noreturn]] void Serve(const std::string& socket) {
    constexpr auto kFrameId =
        static_cast<std::uint32_t>(Number(bridge::MessageId::AddRTExportAVData));
    const SysInterfaceTable& table = *WorkerInterface().table;
    if (!ListenForHosts(socket)) {
        _exit(1);
    }
    while (true) {
        ChannelHandle channel =
            table.CreateChannel(bridge::kProxyChannelId, 0, 0, kForEver, kForEver);
        ChannelHandle callbacks = RegisterProgress(table, channel);
        std::uint32_t id = 0;
        std::uint32_t length = 0;
        std::int32_t capacity = 0;
        void* request = nullptr;
        void* reply = nullptr;
        while (table.ReceivePacket(channel, &id, &request, &length, nullptr) == kChannelDone) {
            table.GetSendBuffer(channel, &reply, &capacity, nullptr);
            const auto answer = id == kFrameId ? AnswerFrame : AnswerValue;
            const std::int32_t answered =
                answer(static_cast<unsigned char*>(request), static_cast<std::int32_t>(length),
                       static_cast<unsigned char*>(reply), capacity);
            table.SendPacket(channel, id, reply, static_cast<std::uint32_t>(answered));
            table.ReleasePacket(channel, request, length);
        }
        table.CloseChannel(&callbacks);
        table.CloseChannel(&channel);
    }
}

/// A process that serves new parsers as long as it lives.
class ReadingWorker {
public:
    ReadingWorker() {
        const std::string socket = m_folder + "/socket";
        m_process = RunBeside([&] { Serve(socket); });
        for (int i = 0; i < 1000 && !UseWorker({.socket = socket}); ++i) {
            usleep(1000);
        }
    }
    ~ReadingWorker() {
        LeaveWorker();
        End(m_process);
        std::filesystem::remove_all(m_folder);
    }
    ReadingWorker(const ReadingWorker&) = delete;
    ReadingWorker& operator=(const ReadingWorker&) = delete;

private:
    std::string m_folder = MakeFolder();
    pid_t m_process = 0;
};

void SmallestRequest(benchmark::State& state) {
    const ReadingWorker worker;
    ReadyParser parser;
    for (auto _ : state) {
        if (parser->SetRTExportExtraParam(1) != 1) {
            state.SkipWithError("a request failed");
            return;
        }
    }
}

void Frames(benchmark::State& state, std::uint32_t length) {
    const ReadingWorker worker;
    ReadyParser parser;
    std::vector<unsigned char> frame(length, 'x');
    const auto send = [&] {
        return parser->AddRTExportAVData(2, frame.data(), length, nullptr, 0, 0) == 1;
    };
    send(); // the first write to each page of new memory costs many times a later one
    for (auto _ : state) {
        if (!send()) {
            state.SkipWithError("a frame was not taken");
            return;
        }
    }
}

void SetInterface() {
    R8P2Parser_SetSysInterface(HostInterface().systemObject, HostInterface().table);
}

/// Processor time in a second in which a parser, its proxy and all servers have nothing to do.
void Idle(benchmark::State& state, const std::string& program) {
    const WorkerStatus worker = UseWorker({.program = program});
    R8XDCAMParser_ResetSysInterface();
    SetInterface(); // the process's own server finds a worker now
    int context = 0;
    ReadyParser parser;
    parser->SetImpCallBack([](std::uint32_t, std::uint32_t, std::int32_t&, void*) {}, &context);
    for (auto _ : state) {
        const double before = ProcessorSeconds();
        sleep(1);
        state.SetIterationTime(ProcessorSeconds() - before);
    }
    if (!worker || parser->SetSystemType(VS_50I) != 1) {
        state.SkipWithError("the worker does not answer");
    }
}

[[noreturn]] void Fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// A clip of one video file that takes next to no space: sixteen blocks of bytes in it.
class LargeClip {
public:
    LargeClip(std::string folder, std::uint64_t bytes) : m_folder(std::move(folder)) {
        for (const char* each : {"VIDEO", "CLIP"}) {
            std::filesystem::create_directories(m_folder + "/card/CONTENTS/" + each);
        }
        std::filesystem::create_directories(m_folder + "/to");
        WriteAt("CLIP/0001AB.XML", "<P2Main/>", 0, 9);
        const std::string block(kMegabyte, 'x');
        for (std::uint64_t i = 0; i < 16; ++i) {
            WriteAt("VIDEO/0001AB.MXF", block, bytes / 16 * i, bytes);
        }
    }
    ~LargeClip() { std::filesystem::remove_all(m_folder); }
    LargeClip(const LargeClip&) = delete;
    LargeClip& operator=(const LargeClip&) = delete;

    [[nodiscard]] std::string Video() const { return m_folder + "/card/CONTENTS/VIDEO/0001AB.MXF"; }
    [[nodiscard]] std::string Card() const { return m_folder + "/card:"; }
    [[nodiscard]] std::string Target() const { return m_folder + "/to"; }

    /// As it was: nothing copied, nothing of the file in memory.
    void Reset() const {
        std::filesystem::remove_all(Target());
        std::filesystem::create_directories(Target());
        const platform::Descriptor file(open(Video().c_str(), O_RDONLY | O_CLOEXEC));
        fsync(file.Get());
        posix_fadvise(file.Get(), 0, 0, POSIX_FADV_DONTNEED);
    }

private:
    void WriteAt(const char* name, const std::string& bytes, std::uint64_t position,
                 std::uint64_t size) const {
        const std::string path = m_folder + "/card/CONTENTS/" + name;
        const platform::Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
        if (pwrite(file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(position)) < 0 ||
            ftruncate(file.Get(), static_cast<off_t>(size)) != 0) {
            Fail(path);
        }
    }

    std::string m_folder;
};

/// Reads a file and works out the checksum that the worker uses.
XXH128_hash_t Checksum(const std::string& path, std::string& block) {
    const platform::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    const std::unique_ptr<XXH3_state_t, XXH_errorcode (*)(XXH3_state_t*)> state(XXH3_createState(),
                                                                                XXH3_freeState);
    XXH3_128bits_reset(state.get());
    ssize_t count = 0;
    while ((count = read(file.Get(), block.data(), block.size())) > 0) {
        XXH3_128bits_update(state.get(), block.data(), static_cast<std::size_t>(count));
    }
    if (count < 0) {
        Fail(path);
    }
    return XXH3_128bits_digest(state.get());
}

void CopyAndCompareFloor(benchmark::State& state, const LargeClip& clip) {
    const std::string copy = clip.Target() + "/copy";
    const std::string command = "cp '" + clip.Video() + "' '" + copy + "'";
    std::string block(kMegabyte, '\0');
    for (auto _ : state) {
        state.PauseTiming();
        clip.Reset();
        state.ResumeTiming();
        if (std::system(command.c_str()) != 0 ||
            XXH128_isEqual(Checksum(clip.Video(), block), Checksum(copy, block)) == 0) {
            state.SkipWithError("the copy is no copy");
        }
    }
}

void Import(benchmark::State& state, const LargeClip& clip, const std::string& program) {
    if (const WorkerStatus worker = UseWorker({.program = program}); !worker) {
        state.SkipWithError(worker.reason.c_str());
        return;
    }
    ReadyParser parser;
    for (auto _ : state) {
        state.PauseTiming();
        clip.Reset();
        stu_R8P2TransInfo info;
        info.text1 = TextFromBytes(clip.Card());
        info.text2 = L"0001AB";
        info.text3 = TextFromBytes(clip.Target() + ":");
        state.ResumeTiming();
        if (parser->ImportFile(info) != 0) {
            state.SkipWithError("the import failed");
        }
    }
}

void RegisterAll(const Arguments& arguments) {
    const std::string& program = arguments[0];
    const std::uint64_t megabytes =
        arguments.size() > 2 ? std::strtoull(arguments[2].c_str(), nullptr, 10) : 4096;
    // Removes its files when the last benchmark has gone.
    const auto clip = std::make_shared<LargeClip>(
        std::filesystem::absolute(arguments[1]).string() + "/large-clip", megabytes * kMegabyte);
    // Nobody listens yet: no server of the process itself, as parsers have their own.
    SetInterface();
    Register("worker/copy_floor", [clip](benchmark::State& state) {
        CopyAndCompareFloor(state, *clip);
    })->Iterations(1);
    Register("worker/import", [clip, program](benchmark::State& state) {
        Import(state, *clip, program);
    })->Iterations(1);
    benchmark::RegisterBenchmark("worker/idle",
                                 [program](benchmark::State& state) { Idle(state, program); })
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(2);
    Register("worker/request", [](benchmark::State& state) {
        RunOn(0);
        SmallestRequest(state);
    });
    Register("worker/frame", [](benchmark::State& state) { Frames(state, kFrame); });
    Register("worker/large_frame", [](benchmark::State& state) { Frames(state, kLargeFrame); });
}

} // namespace
} // namespace nqp2::bench

int main(int argc, char** argv) {
    const int status =
        nqp2::bench::Run(argc, argv, 2, "NQP2-WORKER FOLDER [MEGABYTES]", nqp2::bench::RegisterAll);
    R8XDCAMParser_ResetSysInterface();
    nqp2::LeaveWorker();
    return status;
}
