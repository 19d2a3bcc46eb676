// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/bridge/fake_channel.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>

namespace nqp2::test {

namespace {

FakeChannels* current = nullptr;

constexpr std::chrono::seconds kPatience(20);

std::string NameOf(const std::string& parent, std::uint32_t id) {
    if (id == 20023) {
        return "server";
    }
    if (id == 50) {
        return parent == "server" ? "connection" : "notifications";
    }
    return parent.empty() ? "request" : "callback";
}

SysInterfaceTable MakeTable() {
    SysInterfaceTable table = {};
    table.CreateChannel = [](std::uint32_t id, std::uint32_t sendSize, std::uint32_t receiveSize,
                             std::uint32_t sendTimeout, std::uint32_t receiveTimeout) {
        return current->Open(0, id, {sendSize, receiveSize, sendTimeout, receiveTimeout});
    };
    table.OpenSubChannel = [](ChannelHandle parent, std::uint32_t id, std::uint32_t sendSize,
                              std::uint32_t receiveSize, std::uint32_t sendTimeout,
                              std::uint32_t receiveTimeout) {
        return current->Open(parent, id, {sendSize, receiveSize, sendTimeout, receiveTimeout});
    };
    table.GetSendBuffer = [](ChannelHandle channel, void** buffer, std::int32_t* capacity,
                             std::int32_t* abortFlag) {
        return current->Grant(channel, buffer, capacity, abortFlag);
    };
    table.SendPacket = [](ChannelHandle channel, std::uint32_t id, void* buffer,
                          std::uint32_t length) {
        return current->Send(channel, id, buffer, length);
    };
    table.ReceivePacket = [](ChannelHandle channel, std::uint32_t* id, void** buffer,
                             std::uint32_t* length, std::int32_t* abortFlag) {
        return current->Receive(channel, id, buffer, length, abortFlag);
    };
    table.ReleasePacket = [](ChannelHandle channel, void* buffer, std::uint32_t length) {
        return current->Release(channel, buffer, length);
    };
    table.CloseChannel = [](ChannelHandle* channel) { return current->Close(channel); };
    return table;
}

} // namespace

FakeChannels::FakeChannels() : m_table(MakeTable()) {
    current = this;
}

FakeChannels::~FakeChannels() {
    current = nullptr;
}

void FakeChannels::SetScript(Script script) {
    const std::lock_guard guard(m_lock);
    m_script = std::move(script);
}

void FakeChannels::Refuse(const std::string& call) {
    const std::lock_guard guard(m_lock);
    m_refused.insert(call);
}

void FakeChannels::Allow() {
    const std::lock_guard guard(m_lock);
    m_refused.clear();
}

void FakeChannels::SetCapacity(std::size_t capacity) {
    const std::lock_guard guard(m_lock);
    m_capacity = capacity;
}

FakeChannels::Channel& FakeChannels::Named(const std::string& name) {
    Channel* found = nullptr;
    for (auto& [handle, channel] : m_channels) { // the last one; one that is open, if there is any
        if (channel.name == name && (found == nullptr || !channel.closed || found->closed)) {
            found = &channel;
        }
    }
    if (found == nullptr) {
        throw std::logic_error("no channel " + name);
    }
    return *found;
}

void FakeChannels::Push(const std::string& channel, std::uint32_t id, const Bytes& bytes) {
    const std::lock_guard guard(m_lock);
    Named(channel).arrived.emplace_back(id, bytes);
    m_changed.notify_all();
}

void FakeChannels::Hang(const std::string& channel) {
    const std::lock_guard guard(m_lock);
    Named(channel).hung = true;
    m_changed.notify_all();
}

std::vector<std::string> FakeChannels::Calls(const std::string& channel) {
    const std::lock_guard guard(m_lock);
    std::vector<std::string> calls;
    std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(calls),
                 [&](const std::string& call) { return call.starts_with(channel); });
    return calls;
}

std::vector<std::pair<std::uint32_t, FakeChannels::Bytes>>
FakeChannels::Sent(const std::string& channel) {
    const std::lock_guard guard(m_lock);
    return Named(channel).sent;
}

bool FakeChannels::WaitFor(const std::string& call, std::ptrdiff_t times) {
    std::unique_lock guard(m_lock);
    return m_changed.wait_for(guard, kPatience, [&] {
        return std::count(m_calls.begin(), m_calls.end(), call) >= times;
    });
}

std::size_t FakeChannels::OpenChannels() {
    const std::lock_guard guard(m_lock);
    return static_cast<std::size_t>(
        std::count_if(m_channels.begin(), m_channels.end(),
                      [](const auto& each) { return !each.second.closed; }));
}

bool FakeChannels::Note(const std::string& call, const std::string& details) {
    m_calls.push_back(call + details);
    m_changed.notify_all();
    return !m_refused.contains(call);
}

ChannelHandle FakeChannels::Open(ChannelHandle parent, std::uint32_t id,
                                 const std::uint32_t (&numbers)[4]) {
    const std::lock_guard guard(m_lock);
    const std::string parentName = parent == 0 ? "" : m_channels.at(parent).name;
    std::string details;
    for (const std::uint32_t each : {id, numbers[0], numbers[1], numbers[2], numbers[3]}) {
        details += " " + std::to_string(each);
    }
    if (!Note(parent == 0 ? "CreateChannel" : parentName + " OpenSubChannel", details)) {
        return 0;
    }
    const ChannelHandle handle = m_channels.size() + 1;
    m_channels[handle].name = NameOf(parentName, id);
    m_channels[handle].sendSize = numbers[0] == 0 ? 65536 : numbers[0];
    return handle;
}

std::int32_t FakeChannels::Grant(ChannelHandle handle, void** buffer, std::int32_t* capacity,
                                 const std::int32_t* abortFlag) {
    const std::lock_guard guard(m_lock);
    Channel& channel = m_channels.at(handle);
    if (!Note(channel.name + " GetSendBuffer", abortFlag == nullptr ? "" : "+abort")) {
        return kChannelMisuse;
    }
    channel.granted.assign(std::min<std::size_t>(m_capacity, channel.sendSize), 0xEE);
    *buffer = channel.granted.data();
    *capacity = static_cast<std::int32_t>(channel.granted.size());
    return kChannelDone;
}

std::int32_t FakeChannels::Send(ChannelHandle handle, std::uint32_t id, const void* buffer,
                                std::uint32_t length) {
    std::unique_lock guard(m_lock);
    Channel& channel = m_channels.at(handle);
    const std::string details = " " + std::to_string(id) + " " + std::to_string(length);
    const bool isGranted = buffer == channel.granted.data() && length <= channel.granted.size();
    const Bytes bytes(channel.granted.begin(), channel.granted.begin() + (isGranted ? length : 0));
    if (isGranted) { // before the call is noted, for those who wait for it
        channel.sent.emplace_back(id, bytes);
    }
    if (!Note(channel.name + " Send", details) || !isGranted) {
        return kChannelMisuse;
    }
    const Script script = m_script;
    const std::string name = channel.name;
    guard.unlock();
    if (script) {
        script(name, id, bytes);
    }
    return kChannelDone;
}

std::int32_t FakeChannels::Receive(ChannelHandle handle, std::uint32_t* id, void** buffer,
                                   std::uint32_t* length, std::int32_t* abortFlag) {
    std::unique_lock guard(m_lock);
    Channel& channel = m_channels.at(handle);
    if (!Note(channel.name + " Receive", abortFlag == nullptr ? "" : "+abort")) {
        channel.arrived.clear();
        return kChannelClosed;
    }
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (channel.arrived.empty()) {
        const bool aborted =
            abortFlag != nullptr && std::atomic_ref(*abortFlag).load(std::memory_order_relaxed);
        if (channel.hung || aborted || std::chrono::steady_clock::now() > deadline) {
            return channel.hung ? kChannelClosed : aborted ? kChannelAborted : kChannelTimedOut;
        }
        m_changed.wait_for(guard, std::chrono::milliseconds(2));
    }
    *id = channel.arrived.front().first;
    channel.held = channel.arrived.front().second;
    channel.arrived.pop_front();
    *buffer = channel.held.data();
    *length = static_cast<std::uint32_t>(channel.held.size());
    return kChannelDone;
}

std::int32_t FakeChannels::Release(ChannelHandle handle, const void* buffer, std::uint32_t length) {
    const std::lock_guard guard(m_lock);
    Channel& channel = m_channels.at(handle);
    if (buffer != nullptr && (buffer != channel.held.data() || length != channel.held.size())) {
        throw std::logic_error("released what was not received");
    }
    channel.held = Bytes();
    Note(channel.name + " Release", buffer == nullptr ? "" : " " + std::to_string(length));
    return kChannelDone;
}

std::int32_t FakeChannels::Close(ChannelHandle* handle) {
    const std::lock_guard guard(m_lock);
    Channel& channel = m_channels.at(*handle);
    Note(channel.name + " Close");
    channel.closed = true;
    *handle = 0;
    return kChannelDone;
}

} // namespace nqp2::test
