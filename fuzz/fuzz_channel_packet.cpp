// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A hostile peer: any packets, with good, bad and no descriptors, on the socket of an open channel
// whose other end is used as a host or a worker uses it.
//
// Each step of the input is 40 bytes: a byte for what is done, one for the length of the packet,
// one for each of up to three descriptors, one for how many, two of padding, and the packet.

#include "channel/channel_end.h"
#include "fuzz/measured_input.h"
#include "fuzz/require.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

namespace channel = nqp2::channel;
using nqp2::kChannelDone;
using nqp2::fuzz::Require;

constexpr std::uint32_t kSize = 4096;
constexpr std::size_t kStep = 40;
constexpr std::size_t kMaxSteps = 64;

/// What a peer may send along, made once.
const std::vector<int>& Descriptors() {
    static const std::vector<int> descriptors = [] {
        const auto memory = [](std::size_t size, int seals) {
            const int file = memfd_create("fuzz", MFD_CLOEXEC | MFD_ALLOW_SEALING);
            Require(ftruncate(file, static_cast<off_t>(size)) == 0, "there is memory");
            Require(fcntl(file, F_ADD_SEALS, seals) == 0, "it can be sealed");
            return file;
        };
        constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW;
        return std::vector{memory(4UL * kSize, kSeals), memory(4UL * kSize, kSeals),
                           memory(4UL * kSize, F_SEAL_GROW), memory(kSize, kSeals),
                           open("/dev/null", O_RDWR | O_CLOEXEC)};
    }();
    return descriptors;
}

void SendStep(int socket, std::span<const std::uint8_t, kStep> step) {
    const std::size_t length = std::min<std::size_t>(step[1], sizeof(channel::Packet));
    const std::size_t count = step[5] % 5U;
    std::array<int, 4> files{};
    const auto pair = channel::MakeSocketPair();
    Require(pair.has_value(), "there are sockets");
    for (std::size_t i = 0; i < count; ++i) {
        // One more than there are stands for a fresh socket, of which one end stays here.
        const std::size_t choice = step[2 + i % 3] % (Descriptors().size() + 1);
        files[i] = choice < Descriptors().size() ? Descriptors()[choice] : pair->first.Get();
    }
    std::array<std::uint8_t, sizeof(channel::Packet)> bytes{};
    std::copy_n(step.begin() + 8, bytes.size(), bytes.begin());
    iovec vector{bytes.data(), length};
    alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(4 * sizeof(int))> control{};
    msghdr message{};
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    if (count > 0) {
        message.msg_control = control.data();
        message.msg_controllen = CMSG_SPACE(count * sizeof(int));
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(count * sizeof(int));
        std::memcpy(CMSG_DATA(header), files.data(), count * sizeof(int));
    }
    sendmsg(socket, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
}

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

void Talk(channel::Role role, std::span<const std::uint8_t> input) {
    auto ends = channel::MakeSocketPair();
    auto memory = channel::MakeMemory(kSize, kSize);
    Require(ends.has_value() && memory.has_value(), "there is a channel");
    std::shared_ptr<const channel::Peer> peer = channel::PeerOf(ends->second.Get());
    channel::ChannelEnd end({std::move(ends->first), std::move(peer), std::move(memory->send),
                             std::move(memory->receive)},
                            role, {0, 0});
    for (std::size_t at = 0; at + kStep <= std::min(input.size(), kMaxSteps * kStep); at += kStep) {
        SendStep(ends->second.Get(), input.subspan(at).first<kStep>());
        Use(end, input[at]);
    }
    end.Close();
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const std::span input(data, size);
    Talk(channel::Role::Opens, input);
    Talk(channel::Role::Takes, input);
    return 0;
}
