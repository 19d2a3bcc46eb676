// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "fuzz/hostile_packet.h"

#include "channel/packet.h"
#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace nqp2::fuzz {
namespace {

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
        return std::vector{memory(4UL * kSegmentSize, kSeals), memory(4UL * kSegmentSize, kSeals),
                           memory(4UL * kSegmentSize, F_SEAL_GROW), memory(kSegmentSize, kSeals),
                           open("/dev/null", O_RDWR | O_CLOEXEC)};
    }();
    return descriptors;
}

} // namespace

void SendHostilePacket(int socket, std::span<const std::uint8_t, kPacketStep> step) {
    const std::size_t length = std::min<std::size_t>(step[1], sizeof(channel::Packet));
    const std::size_t count = step[5] % 5U;
    std::array<int, 4> files{};
    const auto pair = channel::MakeSocketPair();
    Require(pair.has_value(), "there are sockets");
    for (std::size_t i = 0; i < count; ++i) {
        // One more than there are means a fresh socket, of which one end stays here.
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

} // namespace nqp2::fuzz
