// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/listener.h"
#include "channel/slots.h"
#include "NQP2ParserU/Channel.h"
#include "platform/guard.h"

#include <mutex>

namespace nqp2::channel {
namespace {

struct Listening {
    std::mutex mutex;
    std::shared_ptr<Listener> listener;
};

/// Never destroyed: threads may outlive static objects.
Listening& Current() {
    static auto& listening = *new Listening;
    return listening;
}

std::shared_ptr<Listener> CurrentListener() {
    const std::lock_guard lock(Current().mutex);
    return Current().listener;
}

ChannelHandle TakeChannel(std::uint32_t channelId, std::uint32_t, std::uint32_t,
                          std::uint32_t sendTimeout, std::uint32_t receiveTimeout) {
    return platform::Guarded<ChannelHandle>(0, [&]() -> ChannelHandle {
        const std::shared_ptr<Listener> listener = CurrentListener();
        return listener != nullptr
                   ? AddChannel(listener->Take(channelId, {sendTimeout, receiveTimeout}))
                   : 0;
    });
}

} // namespace
} // namespace nqp2::channel

namespace nqp2 {

WorkerStatus ListenForHosts(const ListenSettings& settings) {
    return platform::Guarded(
        WorkerStatus{false, "out of memory or threads"}, [&]() -> WorkerStatus {
            const std::lock_guard lock(channel::Current().mutex);
            if (channel::Current().listener != nullptr) {
                return {false, "this process listens already"};
            }
            WorkerStatus status;
            channel::Current().listener = channel::Listener::Start(settings, status);
            return status;
        });
}

void StopListening() {
    platform::Guarded(false, [] { // the first call of all takes memory
        std::shared_ptr<channel::Listener> listener;
        {
            const std::lock_guard lock(channel::Current().mutex);
            listener.swap(channel::Current().listener);
        }
        if (listener != nullptr) {
            listener->Stop();
        }
        return true;
    });
}

SystemInterface WorkerInterface() noexcept {
    static int noServices = 0;
    static SysInterfaceTable table = channel::TableWith(channel::TakeChannel);
    return {&noServices, &table};
}

} // namespace nqp2
