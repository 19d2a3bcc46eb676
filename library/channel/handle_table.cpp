// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/handle_table.h"

#include "platform/process.h"

#include <mutex>
#include <unordered_map>

namespace nqp2::channel {
namespace {

struct Table {
    std::mutex mutex;
    ChannelHandle last = 0;
    std::unordered_map<ChannelHandle, std::shared_ptr<ChannelEnd>> channels;
};

/// Never destroyed: threads of the library may outlive static objects.
Table& Channels() {
    static auto& table = *new Table;
    return table;
}

constexpr unsigned kCounterBits = 40; ///< the process stands above the count

ChannelHandle ProcessPart() {
    return static_cast<ChannelHandle>(platform::ProcessNumber()) << kCounterBits;
}

} // namespace

ChannelHandle AddChannel(std::shared_ptr<ChannelEnd> channel) {
    if (channel == nullptr) {
        return 0;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    const ChannelHandle handle = ProcessPart() | ++table.last;
    table.channels.emplace(handle, std::move(channel));
    return handle;
}

std::shared_ptr<ChannelEnd> FindChannel(ChannelHandle handle) {
    // Before the lock, which a thread of the parent may have held when the child was forked.
    if (handle >> kCounterBits != ProcessPart() >> kCounterBits) {
        return nullptr;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    const auto found = table.channels.find(handle);
    return found != table.channels.end() ? found->second : nullptr;
}

void ForgetIfOver(ChannelHandle handle, const ChannelEnd& channel) {
    if (!channel.IsOver()) {
        return;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    table.channels.erase(handle); // the caller holds it still
}

} // namespace nqp2::channel
