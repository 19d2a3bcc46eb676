// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/worker_proxy.h"
#include "NQP2ParserU/R8P2SysInterface.h"
#include "tests/bridge/wire_example.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace nqp2::bridge {

using Rows = std::vector<std::string>;
using Packets = std::vector<std::pair<std::uint32_t, Bytes>>; ///< numbers and bytes

/// A table of channel functions without a worker behind it: writes down every call, and a script
/// plays the worker. Channels are called after their use: request, callback, server, connection,
/// notifications. One at a time; must outlive all threads that use its table.
class FakeChannels {
public:
    /// Called for each message that the library sends; may push messages.
    using Script =
        std::function<void(const std::string& channel, std::uint32_t id, const Bytes& bytes)>;

    FakeChannels() {
        s_current = this;
        table.CreateChannel = [](std::uint32_t id, auto... numbers) {
            return s_current->Open(0, id, {numbers...});
        };
        table.OpenSubChannel = [](ChannelHandle parent, std::uint32_t id, auto... numbers) {
            return s_current->Open(parent, id, {numbers...});
        };
        table.GetSendBuffer = [](auto... all) { return s_current->Grant(all...); };
        table.SendPacket = [](auto... all) { return s_current->Send(all...); };
        table.ReceivePacket = [](auto... all) { return s_current->Receive(all...); };
        table.ReleasePacket = [](auto... all) { return s_current->Release(all...); };
        table.CloseChannel = [](ChannelHandle* channel) { return s_current->Close(*channel); };
    }

    void SetScript(Script script) {
        const std::lock_guard guard(m_lock);
        m_script = std::move(script);
    }
    /// From here on a call such as "request Send" fails: one that opens answers 0, Receive -6, any
    /// other -1. "" lets all succeed.
    void Refuse(const std::string& call) {
        const std::lock_guard guard(m_lock);
        m_refused = call;
    }
    void Push(const std::string& channel, std::uint32_t id, const Bytes& bytes) {
        const std::lock_guard guard(m_lock);
        Named(channel).arrived.emplace_back(id, bytes);
        m_changed.notify_all();
    }
    /// The worker is gone from that channel, or is back.
    void Hang(const std::string& channel, bool hangs = true) {
        const std::lock_guard guard(m_lock);
        Named(channel).hung = hangs;
    }

    /// The calls so far on one channel, or all: "request Send 20002 8";
    /// "+abort" marks a wait that was given a flag.
    Rows Calls(const std::string& beginning = {}) {
        const std::lock_guard guard(m_lock);
        Rows calls = m_calls;
        std::erase_if(calls, [&](const std::string& call) { return !call.starts_with(beginning); });
        return calls;
    }
    Packets Sent(const std::string& channel) {
        const std::lock_guard guard(m_lock);
        return Named(channel).sent;
    }
    /// Waits until such a call was made so many times; false after some seconds.
    bool WaitFor(const std::string& call, std::ptrdiff_t times = 1) {
        std::unique_lock guard(m_lock);
        return m_changed.wait_for(guard, kPatience, [&] {
            return std::count(m_calls.begin(), m_calls.end(), call) >= times;
        });
    }
    std::ptrdiff_t OpenChannels() {
        const std::lock_guard guard(m_lock);
        return std::count_if(m_channels.begin(), m_channels.end(),
                             [](const auto& each) { return !each.second.closed; });
    }

    static constexpr std::uint32_t kUsualSize = 65536;
    /// The size of the buffers that are granted, at most what a channel was opened for.
    std::atomic<std::size_t> capacity = kUsualSize;
    std::atomic<bool> isFull = false; ///< no buffer is granted until the flag of the wait is set
    SysInterfaceTable table{};

private:
    static constexpr std::chrono::seconds kPatience{20};

    struct Channel {
        std::string name;
        std::uint32_t sendSize = 0;
        Bytes granted = {};
        Bytes held = {};
        std::deque<std::pair<std::uint32_t, Bytes>> arrived = {};
        Packets sent = {};
        bool hung = false;
        bool closed = false;
    };

    static bool IsSet(const std::int32_t* flag) {
        return flag != nullptr && __atomic_load_n(flag, __ATOMIC_RELAXED) != 0;
    }
    /// Writes the call down; false when it is to fail.
    bool Note(const std::string& call, const std::string& details = {}) {
        m_calls.push_back(call + details);
        m_changed.notify_all();
        return call != m_refused;
    }
    /// The last one of that name; one that is open, if there is any.
    Channel& Named(const std::string& name) {
        Channel* found = nullptr;
        for (auto& [handle, channel] : m_channels) {
            if (channel.name == name && (found == nullptr || !channel.closed || found->closed)) {
                found = &channel;
            }
        }
        return found != nullptr ? *found : throw std::logic_error("no channel " + name);
    }

    ChannelHandle Open(ChannelHandle parent, std::uint32_t id,
                       std::initializer_list<std::uint32_t> numbers) {
        const std::lock_guard guard(m_lock);
        const std::string name = parent == 0 ? "" : m_channels.at(parent).name;
        std::string details = " " + std::to_string(id);
        for (const std::uint32_t each : numbers) {
            details += " " + std::to_string(each);
        }
        if (!Note(parent == 0 ? "CreateChannel" : name + " OpenSubChannel", details)) {
            return 0;
        }
        const ChannelHandle handle = m_channels.size() + 1;
        const std::uint32_t size = *numbers.begin();
        m_channels[handle] = {id == 20023        ? "server"
                              : name == "server" ? "connection"
                              : id == 50         ? "notifications"
                              : parent == 0      ? "request"
                                                 : "callback",
                              size == 0 ? kUsualSize : size};
        return handle;
    }
    std::int32_t Grant(ChannelHandle handle, void** buffer, std::int32_t* granted,
                       const std::int32_t* abortFlag) {
        std::unique_lock guard(m_lock);
        Channel& channel = m_channels.at(handle);
        if (!Note(channel.name + " GetSendBuffer", abortFlag == nullptr ? "" : "+abort")) {
            return kChannelMisuse;
        }
        while (isFull) {
            if (IsSet(abortFlag)) {
                return kChannelAborted;
            }
            m_changed.wait_for(guard, std::chrono::milliseconds(2));
        }
        channel.granted.assign(std::min<std::size_t>(capacity, channel.sendSize), 0xEE);
        *buffer = channel.granted.data();
        *granted = static_cast<std::int32_t>(channel.granted.size());
        return kChannelDone;
    }
    std::int32_t Send(ChannelHandle handle, std::uint32_t id, const void* buffer,
                      std::uint32_t length) {
        std::unique_lock guard(m_lock);
        Channel& channel = m_channels.at(handle);
        if (buffer != channel.granted.data() || length > channel.granted.size()) {
            throw std::logic_error("sent what was not granted");
        }
        const Bytes bytes(channel.granted.begin(), channel.granted.begin() + length);
        channel.sent.emplace_back(id, bytes); // before the call is noted, for those who wait for it
        if (!Note(channel.name + " Send",
                  " " + std::to_string(id) + " " + std::to_string(length))) {
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
    std::int32_t Receive(ChannelHandle handle, std::uint32_t* id, void** buffer,
                         std::uint32_t* length, std::int32_t* abortFlag) {
        std::unique_lock guard(m_lock);
        Channel& channel = m_channels.at(handle);
        if (!Note(channel.name + " Receive", abortFlag == nullptr ? "" : "+abort")) {
            channel.arrived.clear();
            return kChannelClosed;
        }
        while (channel.arrived.empty()) {
            if (channel.hung || IsSet(abortFlag)) {
                return channel.hung ? kChannelClosed : kChannelAborted;
            }
            m_changed.wait_for(guard, std::chrono::milliseconds(2));
        }
        std::tie(*id, channel.held) = channel.arrived.front();
        channel.arrived.pop_front();
        *buffer = channel.held.data();
        *length = static_cast<std::uint32_t>(channel.held.size());
        return kChannelDone;
    }
    std::int32_t Release(ChannelHandle handle, const void* buffer, std::uint32_t length) {
        const std::lock_guard guard(m_lock);
        Channel& channel = m_channels.at(handle);
        if (buffer != nullptr && (buffer != channel.held.data() || length != channel.held.size())) {
            throw std::logic_error("released what was not received");
        }
        channel.held = Bytes();
        return kChannelDone;
    }
    std::int32_t Close(ChannelHandle& handle) {
        const std::lock_guard guard(m_lock);
        Channel& channel = m_channels.at(std::exchange(handle, 0));
        Note(channel.name + " Close");
        channel.closed = true;
        return kChannelDone;
    }

    inline static FakeChannels* s_current = nullptr;
    std::mutex m_lock;
    std::condition_variable m_changed;
    Script m_script;
    std::string m_refused;
    Rows m_calls;
    std::map<ChannelHandle, Channel> m_channels;
};

/// Channels to a worker played by the test, installed without a system object: no request servers.
class WorkerTest : public testing::Test {
protected:
    WorkerTest() { R8P2Parser_SetSysInterface(nullptr, &m_channels.table); }
    ~WorkerTest() override { R8P2Parser_SetSysInterface(nullptr, nullptr); }

    /// Numbers as messages carry them.
    static Bytes Image(const std::vector<std::uint32_t>& numbers) {
        Bytes bytes;
        for (const std::uint32_t number : numbers) {
            for (unsigned shift = 0; shift < 32; shift += 8) {
                bytes.push_back(static_cast<unsigned char>(number >> shift));
            }
        }
        return bytes;
    }
    /// The worker answers each request with its own bytes, the result in its place.
    void AnswerWith(std::uint32_t result) {
        m_channels.SetScript([=, this](const std::string& channel, std::uint32_t id, Bytes bytes) {
            // The result is the last field; one message has its data behind it.
            const std::size_t at = id == 20013 ? 4 : bytes.size() - 4;
            const Bytes image = Image({result});
            std::copy(image.begin(), image.end(), bytes.begin() + static_cast<long>(at));
            m_channels.Push(channel, id, bytes);
        });
    }
    /// The worker answers each request with these bytes.
    void AnswerWith(const Bytes& bytes) {
        m_channels.SetScript([=, this](const std::string& channel, std::uint32_t id, const Bytes&) {
            m_channels.Push(channel, id, bytes);
        });
    }

    FakeChannels m_channels;
};

} // namespace nqp2::bridge
