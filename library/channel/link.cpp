// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "channel/link.h"

#include "platform/durable_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace nqp2::channel {
namespace {

constexpr int kSizeSeals = F_SEAL_SHRINK | F_SEAL_GROW;

std::size_t PageSize() {
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

/// From slot to slot; each begins on a page.
std::size_t StrideOf(std::uint32_t messageSize) {
    return (messageSize + PageSize() - 1) / PageSize() * PageSize();
}

/// What the slots take; the notes begin behind them.
std::size_t SlotBytes(std::uint32_t messageSize) {
    return StrideOf(messageSize) * SlotsFor(messageSize);
}

std::size_t FileSizeOf(std::uint32_t messageSize) {
    return SlotBytes(messageSize) + PageSize();
}

std::byte* MapShared(int file, std::size_t size) {
    void* const address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return address != MAP_FAILED ? static_cast<std::byte*>(address) : nullptr;
}

bool IsSealedFile(int file, std::size_t size) {
    struct stat status {};
    const int seals = fcntl(file, F_GET_SEALS);
    return seals >= 0 && (seals & kSizeSeals) == kSizeSeals && fstat(file, &status) == 0 &&
           S_ISREG(status.st_mode) && status.st_size == static_cast<off_t>(size);
}

} // namespace

std::optional<Segment> Segment::Make(std::uint32_t messageSize, platform::Descriptor& file) {
    const std::size_t size = FileSizeOf(messageSize);
    file = platform::Descriptor(memfd_create("nqp2-channel", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file || !platform::FitsFileSizeLimit(size) ||
        ftruncate(file.Get(), static_cast<off_t>(size)) != 0 ||
        fcntl(file.Get(), F_ADD_SEALS, kSizeSeals | F_SEAL_SEAL) != 0) {
        return std::nullopt;
    }
    return Map(file, messageSize);
}

std::optional<Segment> Segment::Map(const platform::Descriptor& file, std::uint32_t messageSize) {
    const std::size_t size = FileSizeOf(messageSize);
    std::byte* const begin = IsSealedFile(file.Get(), size) ? MapShared(file.Get(), size) : nullptr;
    return begin != nullptr ? std::optional(Segment(begin, messageSize)) : std::nullopt;
}

Segment::~Segment() {
    if (m_begin != nullptr) {
        munmap(m_begin, FileSizeOf(m_messageSize));
    }
}

std::uint32_t Segment::SlotCount() const {
    return SlotsFor(m_messageSize);
}

std::byte* Segment::Slot(std::uint32_t number) const {
    return m_begin + number * StrideOf(m_messageSize);
}

std::optional<std::uint32_t> Segment::SlotAt(const void* address) const {
    for (std::uint32_t number = 0; number < SlotCount(); ++number) {
        if (Slot(number) == address) {
            return number;
        }
    }
    return std::nullopt;
}

// In one order for both ends: of a release and a wait that meet, one is seen by the other.

void Segment::NoteRelease(std::uint32_t slot) const {
    Note(slot).fetch_add(1);
}

std::uint32_t Segment::ReleasesOf(std::uint32_t slot) const {
    return Note(slot).load();
}

void Segment::NoteWanted(std::uint32_t packets) const {
    Note(SlotCount()).store(packets);
}

std::uint32_t Segment::WantedPackets() const {
    return Note(SlotCount()).load();
}

std::atomic_ref<std::uint32_t> Segment::Note(std::uint32_t number) const {
    auto* const notes = reinterpret_cast<std::uint32_t*>(m_begin + SlotBytes(m_messageSize));
    return std::atomic_ref(notes[number]);
}

std::optional<SharedMemory> MakeMemory(std::uint32_t sendSize, std::uint32_t receiveSize) {
    if (sendSize == 0 || receiveSize == 0 || sendSize > kMaxMessageSize ||
        receiveSize > kMaxMessageSize) {
        return std::nullopt;
    }
    platform::Descriptor sendFile;
    platform::Descriptor receiveFile;
    std::optional<Segment> send = Segment::Make(sendSize, sendFile);
    std::optional<Segment> receive = Segment::Make(receiveSize, receiveFile);
    if (!send || !receive) {
        return std::nullopt;
    }
    return SharedMemory{std::move(*send), std::move(*receive), std::move(sendFile),
                        std::move(receiveFile)};
}

Packet Describe(PacketKind kind, std::uint32_t channelId, const SharedMemory& memory) {
    Packet packet;
    packet.kind = kind;
    packet.id = channelId;
    packet.sendSize = memory.send.MessageSize();
    packet.receiveSize = memory.receive.MessageSize();
    packet.sendSlots = memory.send.SlotCount();
    packet.receiveSlots = memory.receive.SlotCount();
    return packet;
}

std::optional<Link> AcceptLink(ReceivedPacket& received, platform::Descriptor socket,
                               std::shared_ptr<const Peer> peer) {
    const Packet& packet = received.packet;
    const std::size_t first = DescriptorsWith(packet.kind) - 2;
    // What the peer sends on is what this end receives on.
    std::optional<Segment> receive = Segment::Map(received.descriptors[first], packet.sendSize);
    std::optional<Segment> send = Segment::Map(received.descriptors[first + 1], packet.receiveSize);
    if (!send || !receive) {
        return std::nullopt;
    }
    return Link{std::move(socket), std::move(peer), std::move(*send), std::move(*receive)};
}

} // namespace nqp2::channel
