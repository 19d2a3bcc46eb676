// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/SysInterface.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace nqp2::test {

/// A table of channel functions without a worker behind it: writes down every call, and a script
/// plays the worker. Channels are called after their use: request, callback, server, connection,
/// notifications. One at a time; must outlive all threads that use its table.
class FakeChannels {
public:
    using Bytes = std::vector<unsigned char>;
    /// Called for each message that the library sends; may push messages and close channels.
    using Script =
        std::function<void(const std::string& channel, std::uint32_t id, const Bytes& bytes)>;

    FakeChannels();
    ~FakeChannels();
    FakeChannels(const FakeChannels&) = delete;
    FakeChannels& operator=(const FakeChannels&) = delete;

    [[nodiscard]] SysInterfaceTable* Table() { return &m_table; }
    void SetScript(Script script);
    /// From here on calls such as "request Send" fail. "CreateChannel" and the others that open
    /// answer 0, Receive -6, all others -1.
    void Refuse(const std::string& call);
    void Allow();
    /// The size of the buffers that are granted, at most what a channel was opened for.
    void SetCapacity(std::size_t capacity);

    /// Lets a message arrive.
    void Push(const std::string& channel, std::uint32_t id, const Bytes& bytes);
    /// The worker is gone from that channel.
    void Hang(const std::string& channel);

    /// The calls so far on one channel, or all: "request Send 20002 8", "request Release 8"; "+abort"
    /// marks a wait that was given a flag.
    std::vector<std::string> Calls(const std::string& channel = {});
    /// The messages sent on a channel, as number and bytes.
    std::vector<std::pair<std::uint32_t, Bytes>> Sent(const std::string& channel);
    /// Waits until such a call was made so many times; false after some seconds.
    bool WaitFor(const std::string& call, std::ptrdiff_t times = 1);
    /// Channels that were opened and not closed.
    std::size_t OpenChannels();

    // What the table leads to.
    ChannelHandle Open(ChannelHandle parent, std::uint32_t id, const std::uint32_t (&numbers)[4]);
    std::int32_t Grant(ChannelHandle handle, void** buffer, std::int32_t* capacity,
                       const std::int32_t* abortFlag);
    std::int32_t Send(ChannelHandle handle, std::uint32_t id, const void* buffer,
                      std::uint32_t length);
    std::int32_t Receive(ChannelHandle handle, std::uint32_t* id, void** buffer,
                         std::uint32_t* length, std::int32_t* abortFlag);
    std::int32_t Release(ChannelHandle handle, const void* buffer, std::uint32_t length);
    std::int32_t Close(ChannelHandle* handle);

private:
    struct Channel {
        std::string name;
        std::uint32_t sendSize = 0;
        Bytes granted;
        Bytes held;
        std::deque<std::pair<std::uint32_t, Bytes>> arrived;
        std::vector<std::pair<std::uint32_t, Bytes>> sent;
        bool hung = false;
        bool closed = false;
    };

    /// Writes the call down; false when it is to fail.
    bool Note(const std::string& call, const std::string& details = {});
    Channel& Named(const std::string& name);

    std::mutex m_lock;
    std::condition_variable m_changed;
    SysInterfaceTable m_table;
    Script m_script;
    std::set<std::string> m_refused;
    std::size_t m_capacity = 65536;
    std::vector<std::string> m_calls;
    std::map<ChannelHandle, Channel> m_channels;
};

} // namespace nqp2::test
