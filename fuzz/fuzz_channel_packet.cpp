// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A hostile peer: any packets, with good, bad and no descriptors, on the socket of an open channel
// whose other end is used as a host or a worker uses it. The first byte of each packet's
// description (fuzz/hostile_packet.h) says what the other end does.

#include "channel/channel_end.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/hostile_packet.h"

#include <algorithm>
#include <cstring>

namespace nqp2::fuzz {
namespace {

constexpr std::uint32_t kSize = kSegmentSize;
constexpr std::size_t kStep = kPacketStep;
constexpr std::size_t kMaxSteps = 64;

/// Uses the end without waiting; a message must lie where the whole slot can be read and written.
void Use(channel::ChannelEnd& end, std::uint8_t what) {
    void* buffer = nullptr;
    std::uint32_t id = 0;
    std::uint32_t length = 0;
    std::int32_t capacity = 0;
    switch (what % 5) {
    case 0:
        if (end.Receive(&id, &buffer, &length, nullptr) == kChannelDone) {
            Require(buffer != nullptr && length <= kSize, "a message fits its slot");
            std::memset(buffer, 0, length);
        }
        break;
    case 1:
        if (end.GetSendBuffer(&buffer, &capacity, nullptr) == kChannelDone) {
            Require(buffer != nullptr && capacity == static_cast<std::int32_t>(kSize),
                    "a grant is as large as agreed");
            std::memset(buffer, 1, kSize);
            end.Send(7, buffer, kSize);
        }
        break;
    case 2:
        end.Release(nullptr);
        break;
    case 3:
        end.SubChannel(what, {}, {});
        break;
    default:
        break;
    }
}

void Talk(channel::Role role, Input input) {
    auto ends = channel::MakeSocketPair();
    auto memory = channel::MakeMemory(kSize, kSize);
    Require(ends.has_value() && memory.has_value(), "there is a channel");
    std::shared_ptr<const channel::Peer> peer = channel::PeerOf(ends->second.Get());
    channel::ChannelEnd end({std::move(ends->first), std::move(peer), std::move(memory->send),
                             std::move(memory->receive)},
                            role, {0, 0});
    for (std::size_t at = 0; at + kStep <= std::min(input.size(), kMaxSteps * kStep); at += kStep) {
        SendHostilePacket(ends->second.Get(), input.subspan(at).first<kStep>());
        Use(end, input[at]);
    }
    end.Close();
}

} // namespace

void TestInput(Input input) {
    Talk(channel::Role::Opens, input);
    Talk(channel::Role::Takes, input);
}

} // namespace nqp2::fuzz
