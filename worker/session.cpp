// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/session.h"

#include "bridge/message_ids.h"
#include "worker/dispatch.h"
#include "worker/host_services.h"

#include <thread>

namespace nqp2::worker {
namespace {

using bridge::MessageId;

void HearCallback(ChannelLine& line, ProgressLink& progress, std::uint32_t id,
                  unsigned char* buffer, std::int32_t length) {
    bridge::ProgressMessage answer;
    if (id == Number(MessageId::RegisterProgress)) {
        bridge::ResultMessage registered;
        registered.result = bridge::kDone;
        if (line.SendMessage(id, registered)) {
            progress.Attach(line);
        }
    } else if (id == Number(MessageId::Progress) && answer.Restore(buffer, length) != 0) {
        progress.Answered(answer.abort != 0);
    }
}

} // namespace

void Session::ServeRequests() {
    const auto answer = [&](std::uint32_t id, unsigned char* request, std::int32_t length) {
        m_requests.Send(id, [&](unsigned char* reply, std::int32_t capacity) {
            return Dispatch(m_operations, id, request, length, reply, capacity);
        });
    };
    while (m_requests.Receive(answer)) {
    }
}

void Session::ServeCallbacks() {
    ChannelLine callbacks = m_requests.TakeSubChannel(bridge::kProxyChannelId, kNoTimeout);
    if (!callbacks.IsOpen()) {
        return;
    }
    std::thread services([&] {
        ChannelLine server = callbacks.TakeSubChannel(bridge::kRequestServerId, kNoTimeout);
        TalkToHost(server);
    });
    const auto hear = [&](std::uint32_t id, unsigned char* buffer, std::int32_t length) {
        HearCallback(callbacks, m_progress, id, buffer, length);
    };
    while (callbacks.Receive(hear)) {
    }
    m_progress.Detach();
    callbacks.Close();
    services.join();
}

void Session::Serve() {
    std::thread callbacks([this] { ServeCallbacks(); });
    ServeRequests();
    m_requests.Close();
    callbacks.join();
}

void Session::Stop() {
    m_progress.Stop();
    m_requests.Close();
}

} // namespace nqp2::worker
