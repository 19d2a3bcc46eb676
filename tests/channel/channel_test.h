// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Channel.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace nqp2::test {

inline constexpr std::uint32_t kForEver = 0xFFFFFFFF;
inline constexpr std::uint32_t kRequestSize = 45360000;

inline const SysInterfaceTable& Host() {
    return *HostInterface().table;
}
inline const SysInterfaceTable& WorkerEnd() {
    return *WorkerInterface().table;
}

/// A folder in which a worker may listen.
class SocketFolder : public TempFolder {
public:
    SocketFolder() { chmod(Path().c_str(), 0700); }
    [[nodiscard]] std::string Socket() const { return Path("s"); }
};

inline std::size_t CountEntries(const std::string& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                  std::filesystem::directory_iterator()));
}

/// What a process holds of the system; compared before and after.
using Holdings = std::map<std::string, std::size_t>;

inline Holdings HeldBy(const std::string& process = "self") {
    const std::string folder = "/proc/" + process;
    Holdings held{{"descriptors", CountEntries(folder + "/fd")},
                  {"threads", CountEntries(folder + "/task")}};
    std::ifstream maps(folder + "/maps");
    for (std::string line; std::getline(maps, line);) {
        held["mappings"] += line.find("nqp2-channel") != std::string::npos ? 1U : 0U;
    }
    return held;
}

/// Waits up to ten seconds for what another thread or process is about to do.
template <class Condition>
bool Eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return condition();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// What a process holds once its threads have closed what they were about to close: nothing has
/// changed for a while.
inline Holdings Settled(const std::string& process = "self") {
    constexpr int kLooksAlike = 30;
    // With the first thread of a program the thread sanitizer starts one of its own, for good.
    std::thread([] {}).join();
    Holdings held = HeldBy(process);
    int alike = 0;
    EXPECT_TRUE(Eventually([&] {
        const Holdings now = HeldBy(process);
        alike = now == held ? alike + 1 : 0;
        held = now;
        return alike >= kLooksAlike;
    }));
    return held;
}

/// Whether a process comes to hold no more than before, but for descriptors of the test's own. Ends
/// of connections are noticed by other threads, which a busy machine may leave waiting.
inline testing::AssertionResult IsBackTo(const Holdings& before, std::size_t ownDescriptors = 0,
                                         const std::string& process = "self") {
    Holdings now;
    const bool isBack = Eventually([&] {
        now = HeldBy(process);
        return std::all_of(now.begin(), now.end(), [&](const auto& each) {
            const std::size_t own = each.first == "descriptors" ? ownDescriptors : 0;
            return each.second <= before.at(each.first) + own;
        });
    });
    return (isBack ? testing::AssertionSuccess() : testing::AssertionFailure())
           << testing::PrintToString(now) << "; before: " << testing::PrintToString(before);
}

/// Milliseconds that an operation takes.
template <class Operation>
long TimeOf(Operation operation) {
    const auto start = std::chrono::steady_clock::now();
    operation();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start)
        .count();
}

// Twenty milliseconds are promised; sanitizers and busy machines take many times that. What must
// not pass are waits that end by accident or not at all.
inline constexpr long kSlack = 1000;

/// Bytes that differ from message to message and from place to place.
inline void FillPattern(void* buffer, std::size_t length, std::uint32_t seed) {
    auto* const bytes = static_cast<std::byte*>(buffer);
    std::uint64_t word = seed;
    for (std::size_t i = 0; i < length; i += sizeof(word)) {
        word = word * 6364136223846793005U + 1442695040888963407U;
        std::memcpy(bytes + i, &word, std::min(sizeof(word), length - i));
    }
}

inline bool HasPattern(const void* buffer, std::size_t length, std::uint32_t seed) {
    std::vector<unsigned char> expected(length);
    FillPattern(expected.data(), length, seed);
    return length == 0 || std::memcmp(buffer, expected.data(), length) == 0;
}

struct Received {
    std::int32_t status = 0;
    std::uint32_t id = 0;
    void* buffer = nullptr;
    std::uint32_t length = 0;
};

inline Received Receive(const SysInterfaceTable& table, ChannelHandle channel,
                        std::int32_t* abortFlag = nullptr) {
    Received received;
    received.status =
        table.ReceivePacket(channel, &received.id, &received.buffer, &received.length, abortFlag);
    return received;
}

/// Receives a message without bytes and releases it; its id, or the status when that is not 1.
inline std::int32_t NextId(const SysInterfaceTable& table, ChannelHandle channel) {
    const Received received = Receive(table, channel);
    if (received.status != kChannelDone) {
        return received.status;
    }
    table.ReleasePacket(channel, received.buffer, received.length);
    return static_cast<std::int32_t>(received.id);
}

struct Granted {
    std::int32_t status = 0;
    void* buffer = nullptr;
    std::int32_t capacity = 0;
};

inline Granted Grant(const SysInterfaceTable& table, ChannelHandle channel,
                     std::int32_t* abortFlag = nullptr) {
    Granted granted;
    granted.status = table.GetSendBuffer(channel, &granted.buffer, &granted.capacity, abortFlag);
    return granted;
}

/// The status of the first slot that fails, or 1.
inline std::int32_t SendPattern(const SysInterfaceTable& table, ChannelHandle channel,
                                std::uint32_t id, std::uint32_t length = 0) {
    const Granted granted = Grant(table, channel);
    if (granted.status != kChannelDone) {
        return granted.status;
    }
    FillPattern(granted.buffer, length, id);
    return table.SendPacket(channel, id, granted.buffer, length);
}

/// Both ends of a channel in one process: the worker listens on a thread of its own.
class ChannelTest : public testing::Test {
protected:
    ChannelTest() {
        EXPECT_TRUE(ListenForHosts(m_folder.Socket()));
        EXPECT_TRUE(UseWorker({.socket = m_folder.Socket()}));
    }
    ~ChannelTest() override {
        Disconnect();
        StopListening();
        LeaveWorker();
    }

    void Disconnect() {
        Host().CloseChannel(&m_host);
        WorkerEnd().CloseChannel(&m_worker);
    }

    void Connect(std::uint32_t hostSends = 4096, std::uint32_t workerSends = 4096,
                 std::uint32_t timeOut = kForEver) {
        std::thread worker([&] {
            EXPECT_TRUE(Eventually([&] {
                m_worker = WorkerEnd().CreateChannel(7, 0, 0, timeOut, timeOut);
                return m_worker != 0;
            }));
        });
        m_host = Host().CreateChannel(7, hostSends, workerSends, timeOut, timeOut);
        worker.join();
        ASSERT_TRUE(m_host != 0 && m_worker != 0);
    }

    SocketFolder m_folder;
    ChannelHandle m_host = 0;
    ChannelHandle m_worker = 0;
};

} // namespace nqp2::test
