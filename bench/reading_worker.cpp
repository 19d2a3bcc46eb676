// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "bench/reading_worker.h"

#include "bench/measure.h"
#include "bridge/messages.h"
#include "NQP2ParserU/Channel.h"

#include <cstdint>
#include <string>
#include <unistd.h>

namespace nqp2::bench {
namespace {

constexpr std::uint32_t kForEver = 0xFFFFFFFF;

std::int32_t AnswerFrame(unsigned char* request, std::int32_t length, unsigned char* reply,
                         std::int32_t capacity) {
    bridge::AVDataMessage message;
    message.Restore(request, length);
    Keep(Sum(message.data1, message.length1));
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

void AnswerAll(const SysInterfaceTable& table, ChannelHandle channel) {
    constexpr auto kFrameId =
        static_cast<std::uint32_t>(Number(bridge::MessageId::AddRTExportAVData));
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
}

[[noreturn]] void Serve(const std::string& socket) {
    const SysInterfaceTable& table = *WorkerInterface().table;
    if (!ListenForHosts(socket)) {
        _exit(1);
    }
    while (true) {
        ChannelHandle channel =
            table.CreateChannel(bridge::kProxyChannelId, 0, 0, kForEver, kForEver);
        ChannelHandle callbacks = RegisterProgress(table, channel);
        AnswerAll(table, channel);
        table.CloseChannel(&callbacks);
        table.CloseChannel(&channel);
    }
}

} // namespace

ReadingWorker::ReadingWorker() {
    const std::string socket = m_folder.Path("socket");
    m_process = RunBeside([&] { Serve(socket); });
    for (int i = 0; i < 1000 && !UseWorker({.socket = socket}); ++i) {
        usleep(1000);
    }
}

ReadingWorker::~ReadingWorker() {
    LeaveWorker();
    End(m_process);
}

} // namespace nqp2::bench
