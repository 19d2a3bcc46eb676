// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A peer that speaks to the socket itself and says what no honest one would.

#include "channel/channel_end.h"
#include "channel/rendezvous.h"
#include "tests/channel/channel_test.h"

#include <array>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <sys/socket.h>

namespace nqp2::channel {
namespace {

using test::WorkerEnd;

/// Sends any packet with any descriptors, cut off or longer too.
void SendRaw(int socket, const Packet& packet, const std::vector<int>& files = {},
             std::size_t length = sizeof(Packet)) {
    std::array<std::byte, 64> bytes{};
    std::memcpy(bytes.data(), &packet, sizeof(packet));
    iovec vector{bytes.data(), length};
    std::vector<std::byte> control(CMSG_SPACE(files.size() * sizeof(int)));
    msghdr message{};
    message.msg_iov = &vector;
    message.msg_iovlen = 1;
    if (!files.empty()) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        *header = {CMSG_LEN(files.size() * sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(CMSG_DATA(header), files.data(), files.size() * sizeof(int));
    }
    ASSERT_EQ(sendmsg(socket, &message, MSG_NOSIGNAL), static_cast<ssize_t>(length));
}

bool IsClosedByPeer(int socket) {
    pollfd watched{socket, POLLIN, 0};
    char byte = 0;
    return poll(&watched, 1, 3000) == 1 && recv(socket, &byte, 1, 0) <= 0;
}

platform::Descriptor MemoryFile(std::size_t size, int seals) {
    platform::Descriptor file(memfd_create("hostile", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    EXPECT_EQ(ftruncate(file.Get(), static_cast<off_t>(size)), 0);
    EXPECT_EQ(fcntl(file.Get(), F_ADD_SEALS, seals), 0);
    return file;
}

constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW;
constexpr std::size_t kGoodSize = 5 * 4096; ///< four slots and the notes

/// A channel on a line that is right, to be spoiled.
Packet GoodOffer() {
    Packet packet;
    packet.kind = PacketKind::Offer;
    packet.id = 7;
    packet.sendSize = packet.receiveSize = 4096;
    packet.sendSlots = packet.receiveSlots = 4;
    return packet;
}

class HostileHostTest : public test::ChannelTest {
protected:
    /// Nobody was let in, nothing was kept, and the next honest host is served.
    void ExpectRefused(const platform::Descriptor& socket) {
        EXPECT_TRUE(IsClosedByPeer(socket.Get()));
        EXPECT_EQ(WorkerEnd().CreateChannel(7, 0, 0, 0, 0), 0U);
    }
    platform::Descriptor Visit() { return ConnectTo(m_folder.Socket()); }
    platform::Descriptor VisitPolitely() {
        platform::Descriptor line = Visit();
        SendRaw(line.Get(), Packet());
        return line;
    }
};

TEST_F(HostileHostTest, MemoryThatIsNotAsPromisedIsRefused) {
    const test::Holdings before = test::Settled();
    {
        const platform::Descriptor good = MemoryFile(kGoodSize, kSeals);
        const std::pair<const char*, platform::Descriptor> badFiles[] = {
            {"not sealed", MemoryFile(kGoodSize, 0)},
            {"can be cut", MemoryFile(kGoodSize, F_SEAL_GROW)},
            {"too short", MemoryFile(kGoodSize - 4096, kSeals)},
            {"too long", MemoryFile(kGoodSize + 1, kSeals)},
            {"cannot be written", MemoryFile(kGoodSize, kSeals | F_SEAL_WRITE)},
            {"no file", std::move(MakeSocketPair()->first)},
            {"a device", platform::Descriptor(open("/dev/zero", O_RDWR | O_CLOEXEC))},
        };
        for (const auto& [what, bad] : badFiles) {
            SCOPED_TRACE(what);
            for (const auto& [first, second] : {std::pair(&bad, &good), std::pair(&good, &bad)}) {
                const platform::Descriptor line = VisitPolitely();
                auto ends = MakeSocketPair();
                SendRaw(line.Get(), GoodOffer(), {ends->second.Get(), first->Get(), second->Get()});
                ends->second = {};
                ExpectRefused(ends->first);
            }
        }
    }
    EXPECT_TRUE(test::IsBackTo(before));
    Connect();
}

TEST_F(HostileHostTest, PacketsThatAreNoneEndTheLine) {
    const test::Holdings before = test::Settled();
    const platform::Descriptor file = MemoryFile(kGoodSize, kSeals);
    const std::vector<int> files(3, file.Get());
    struct Case {
        const char* what;
        std::function<void(Packet&)> spoil;
        std::vector<int> files;
        std::size_t length = sizeof(Packet);
    };
    const Case cases[] = {
        {"no memory", [](Packet&) {}, {}},
        {"one file", [](Packet&) {}, {file.Get()}},
        {"many files", [](Packet&) {}, std::vector<int>(40, file.Get())},
        {"cut off", [](Packet&) {}, files, 31},
        {"longer", [](Packet&) {}, files, 64},
        {"another kind", [](Packet& p) { p.kind = PacketKind::Data; }, {}},
        {"a second greeting", [](Packet& p) { p.kind = PacketKind::Hello; }, {}},
        {"unknown kind", [](Packet& p) { p.kind = static_cast<PacketKind>(77); }, {}},
        {"size of 0", [](Packet& p) { p.sendSize = 0; }, files},
        {"huge", [](Packet& p) { p.receiveSize = 0xFFFFFFFF; }, files},
        {"slots", [](Packet& p) { p.receiveSlots = 5; }, files},
    };
    for (const Case& wrong : cases) {
        SCOPED_TRACE(wrong.what);
        Packet packet = GoodOffer();
        wrong.spoil(packet);
        const platform::Descriptor line = VisitPolitely();
        SendRaw(line.Get(), packet, wrong.files, wrong.length);
        ExpectRefused(line);
    }
    const platform::Descriptor line = Visit();
    SendRaw(line.Get(), GoodOffer(), files); // without a greeting
    ExpectRefused(line);
    EXPECT_TRUE(test::IsBackTo(before, 2));
}

TEST_F(HostileHostTest, OneThatSaysNothingIsDroppedAndHoldsUpNoOther) {
    std::vector<platform::Descriptor> silent;
    for (int i = 0; i < 20; ++i) {
        silent.push_back(Visit());
    }
    EXPECT_LT(test::TimeOf([&] { Connect(); }), test::kSlack);
    EXPECT_TRUE(IsClosedByPeer(silent.back().Get()));
}

/// An open channel whose other end the test plays, as host or as worker.
class HostileTalk {
public:
    explicit HostileTalk(Role role)
        : end({std::move(m_ends.first), PeerOf(Socket()), std::move(m_memory.send),
               std::move(m_memory.receive)},
              role, {2000, 2000}) {}
    ChannelStatus Receive() {
        std::uint32_t id = 0;
        std::uint32_t length = 0;
        void* buffer = nullptr;
        return end.Receive(&id, &buffer, &length, nullptr);
    }
    [[nodiscard]] int Socket() const { return m_ends.second.Get(); }

private:
    decltype(MakeSocketPair())::value_type m_ends = *MakeSocketPair();
    SharedMemory m_memory = *MakeMemory(4096, 4096);

public:
    const Segment peersSend = *Segment::Map(m_memory.receiveFile, 4096);
    const Segment peersReceive = *Segment::Map(m_memory.sendFile, 4096);
    ChannelEnd end;
};

Packet PacketOf(PacketKind kind, std::uint32_t slot = 0, std::uint32_t length = 0) {
    Packet packet = GoodOffer();
    packet.kind = kind;
    packet.slot = slot;
    packet.length = length;
    return packet;
}

TEST(HostileTalkTest, PacketsThatNoHonestPeerSendsEndTheChannel) {
    const test::Holdings before = test::Settled();
    const platform::Descriptor file = MemoryFile(kGoodSize, kSeals);
    const platform::Descriptor plain(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    struct Case {
        const char* what;
        Packet packet;
        std::vector<int> files;
    };
    const Case cases[] = {
        {"slot that we hold", PacketOf(PacketKind::Data, 3), {}},
        {"slot too high", PacketOf(PacketKind::Data, 4), {}},
        {"longer than the slot", PacketOf(PacketKind::Data, 0, 4097), {}},
        {"slot that was not sent", PacketOf(PacketKind::Release, 1), {}},
        {"released slot too high", PacketOf(PacketKind::Release, 33), {}},
        {"file with a message", PacketOf(PacketKind::Data), {file.Get()}},
        {"greeting", PacketOf(PacketKind::Hello), {}},
        {"late answer", PacketOf(PacketKind::Acknowledge), {}},
        {"stream offered", PacketOf(PacketKind::Offer), {plain.Get(), file.Get(), file.Get()}},
        {"file offered as socket",
         PacketOf(PacketKind::Offer),
         {file.Get(), file.Get(), file.Get()}},
    };
    for (const Role role : {Role::Opens, Role::Takes}) {
        for (const Case& wrong : cases) {
            SCOPED_TRACE(wrong.what);
            HostileTalk talk(role);
            SendRaw(talk.Socket(), PacketOf(PacketKind::Data, 3, 4096));
            SendRaw(talk.Socket(), wrong.packet, wrong.files);
            EXPECT_EQ(talk.Receive(), kChannelDone) << "what arrived before is given";
            EXPECT_EQ(talk.Receive(), kChannelClosed);
            EXPECT_TRUE(IsClosedByPeer(talk.Socket()));
        }
        // A good offer, which none but the one who connected makes.
        HostileTalk offered(role);
        const auto ends = MakeSocketPair();
        SendRaw(offered.Socket(), PacketOf(PacketKind::Offer),
                {ends->first.Get(), file.Get(), file.Get()});
        EXPECT_TRUE(role == Role::Takes ? offered.end.SubChannel(7, {}, {}) != nullptr
                                        : offered.Receive() == kChannelClosed);
    }
    EXPECT_TRUE(test::IsBackTo(before, 2));
}

TEST(HostileTalkTest, APeerThatNeverReadsCannotBlockAnybody) {
    HostileTalk talk(Role::Takes);
    constexpr std::uint32_t kEnough = 2000; // packets that fill any queue
    std::uint32_t answers = 0;
    do {
        // A peer that keeps to the rules asks for a second packet when it has read the first.
        talk.peersSend.NoteWanted(answers < kEnough ? 1 : answers - kEnough + 2);
        SendRaw(talk.Socket(), PacketOf(PacketKind::Data));
        ASSERT_EQ(talk.Receive(), kChannelDone);
        ASSERT_LT(++answers, 2 * kEnough);
    } while (talk.end.Release(nullptr) == kChannelDone);
    EXPECT_GT(answers, kEnough) << "packets that were not asked for";
    EXPECT_EQ(talk.Receive(), kChannelClosed);
}

TEST(HostileTalkTest, ReleasesOutOfTurnCostThePeerItsOwnMessages) {
    HostileTalk talk(Role::Takes);
    std::int32_t abortFlag = 1;
    void* buffer = nullptr;
    std::int32_t capacity = 0;
    for (const std::uint32_t slot : {0U, 1U, 2U, 3U}) {
        EXPECT_EQ(talk.end.GetSendBuffer(&buffer, &capacity, &abortFlag), kChannelDone);
        talk.peersReceive.NoteRelease(slot);
        ASSERT_EQ(talk.end.Send(1, buffer, 1), kChannelDone) << "granted before";
        talk.peersReceive.NoteRelease(slot);
    }
    EXPECT_EQ(talk.end.GetSendBuffer(&buffer, &capacity, &abortFlag), kChannelAborted);
    EXPECT_EQ(talk.peersReceive.WantedPackets(), 0U) << "nobody waits any more";
    SendRaw(talk.Socket(), PacketOf(PacketKind::Data));
    EXPECT_EQ(talk.Receive(), kChannelDone);
}

TEST(RendezvousTest, TheFolderIsTheUsersOwnAndOnlyAStaleSocketIsReplaced) {
    const test::SocketFolder folder;
    chmod(folder.Path().c_str(), 0750);
    EXPECT_NE(ListenForHosts(folder.Socket()).reason.find(folder.Path()), std::string::npos);
    chmod(folder.Path().c_str(), 0700);
    symlink(folder.Path().c_str(), folder.Path("link").c_str());
    folder.Write("file", "somebody's");
    for (const std::string& bad :
         {folder.Path("link/s"), folder.Path("missing/s"), folder.Path(std::string(200, 'a')),
          std::string(), folder.Path("file")}) {
        EXPECT_FALSE(ListenForHosts(bad)) << bad;
    }
    EXPECT_EQ(std::filesystem::file_size(folder.Path("file")), 10U);
    platform::Descriptor stale;
    ASSERT_TRUE(ListenOn(folder.Socket(), stale));
    EXPECT_FALSE(ListenForHosts(folder.Socket())) << "somebody listens";
    stale = {};
    EXPECT_FALSE(UseWorker({.socket = folder.Socket()}));
    EXPECT_TRUE(ListenForHosts(folder.Socket()));
    EXPECT_FALSE(ListenForHosts(folder.Path("t"))) << "in one place at a time";
    StopListening();
    EXPECT_EQ(test::CountEntries(folder.Path()), 2U) << "no socket";
}

} // namespace
} // namespace nqp2::channel
