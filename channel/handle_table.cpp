// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/handle_table.h"

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

} // namespace

ChannelHandle AddChannel(std::shared_ptr<ChannelEnd> channel) {
    if (channel == nullptr) {
        return 0;
    }
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    table.channels.emplace(++table.last, std::move(channel));
    return table.last;
}

std::shared_ptr<ChannelEnd> FindChannel(ChannelHandle handle) {
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    const auto found = table.channels.find(handle);
    return found != table.channels.end() ? found->second : nullptr;
}

std::shared_ptr<ChannelEnd> RemoveChannel(ChannelHandle handle) {
    Table& table = Channels();
    const std::lock_guard lock(table.mutex);
    auto node = table.channels.extract(handle);
    return node.empty() ? nullptr : std::move(node.mapped());
}

} // namespace nqp2::channel
