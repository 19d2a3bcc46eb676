// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A host that speaks to a running worker by itself and says what no library would.

#include "bridge/messages.h"
#include "tests/channel/channel_test.h"
#include "tests/support/child_process.h"
#include "tests/worker/transfer_fixture.h"

#include <csignal>

namespace nqp2::worker {
namespace {

using bridge::MessageId;
using bridge::Number;
using Bytes = std::vector<unsigned char>;
using test::Host;
using test::kForEver;

template <class Message>
Bytes Saved(const Message& message) {
    Bytes bytes(8192);
    bytes.resize(static_cast<std::size_t>(
        message.Save(bytes.data(), static_cast<std::int32_t>(bytes.size()))));
    return bytes;
}

/// The three channels that a library opens for each parser.
class RawHost {
public:
    RawHost() {
        constexpr std::uint32_t kSmall = 20480;
        constexpr std::uint32_t kPatience = 10000;
        m_requests = Host().CreateChannel(bridge::kProxyChannelId, test::kRequestSize,
                                          test::kRequestSize, kPatience, kPatience);
        m_callback = Host().OpenSubChannel(m_requests, bridge::kProxyChannelId, kSmall, kSmall,
                                           kForEver, kForEver);
        m_server = Host().OpenSubChannel(m_callback, bridge::kRequestServerId, kSmall, kSmall,
                                         kForEver, kForEver);
        EXPECT_TRUE(m_requests != 0 && m_callback != 0 && m_server != 0);
    }
    RawHost(const RawHost&) = delete;
    RawHost& operator=(const RawHost&) = delete;
    ~RawHost() { Close(); }

    void Close() {
        for (ChannelHandle* each : {&m_requests, &m_callback, &m_server}) {
            Host().CloseChannel(each);
        }
    }
    [[nodiscard]] ChannelHandle Requests() const { return m_requests; }
    [[nodiscard]] ChannelHandle Callback() const { return m_callback; }
    [[nodiscard]] ChannelHandle Server() const { return m_server; }

    /// False when the worker is gone or does not take it, which is waited for or not.
    static bool Send(ChannelHandle channel, std::uint32_t id, const Bytes& bytes,
                     bool waits = false) {
        void* buffer = nullptr;
        std::int32_t capacity = 0;
        std::int32_t abort = 1;
        if (Host().GetSendBuffer(channel, &buffer, &capacity, waits ? nullptr : &abort) !=
            kChannelDone) {
            return false;
        }
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(buffer));
        return Host().SendPacket(channel, id, buffer, static_cast<std::uint32_t>(bytes.size())) ==
               kChannelDone;
    }
    /// Whether the worker answers under the same number.
    [[nodiscard]] bool IsAnswered(std::uint32_t id, const Bytes& bytes) const {
        return Send(m_requests, id, bytes, true) &&
               test::NextId(Host(), m_requests) == static_cast<std::int32_t>(id);
    }

private:
    ChannelHandle m_requests = 0;
    ChannelHandle m_callback = 0;
    ChannelHandle m_server = 0;
};

class HostileHostTest : public testing::Test {
protected:
    HostileHostTest() {
        EXPECT_TRUE(UseWorker({.program = NQP2_WORKER_PROGRAM, .socket = m_folder.Socket()}));
        m_worker = test::ChildNamed("nqp2-worker");
        EXPECT_TRUE(RawHost().IsAnswered(Number(MessageId::SetSystemType), {}));
        AddWholeClip(m_card, "0001AB");
    }
    ~HostileHostTest() override {
        EXPECT_TRUE(test::IsBackTo(m_before, 0, std::to_string(m_worker)));
        EXPECT_TRUE(RawHost().IsAnswered(Number(MessageId::SetSystemType), {})) << "others";
        EXPECT_EQ(kill(m_worker, 0), 0) << "the worker it was";
        EXPECT_LT(test::TimeOf([] { LeaveWorker(); }), test::kSlack);
    }

    /// Requests that would be good ones.
    std::vector<std::pair<MessageId, Bytes>> Requests() {
        stu_R8P2TransInfo info;
        info.text1 = m_card.Root();
        info.text2 = L"0001AB";
        info.text3 = InterfaceRoot(m_to.Path());
        info.relatedClips.Add({});
        CStringArray names;
        names.Add(L"0001AB");
        bridge::RTExportParamMessage parameters;
        parameters.text1 = m_card.Root();
        parameters.relatedClips.Add({});
        const unsigned char pixels[12] = {};
        const CString root = InterfaceRoot(m_to.Path());
        return {
            {MessageId::SetSystemType, Saved(bridge::SystemTypeMessage{{}, 1, 0})},
            {MessageId::ImportFile, Saved(bridge::ImportFileMessage{{}, info, 0})},
            {MessageId::ExportFile, Saved(bridge::ExportFileMessage{{}, info, names, 0})},
            {MessageId::DeleteFile, Saved(bridge::TextPairMessage{{}, L"0001AB", root, 0})},
            {MessageId::GetUploadOffset, Saved(bridge::UploadOffsetMessage())},
            {MessageId::SetRTExportParam, Saved(parameters)},
            {MessageId::StartRTExport, Saved(bridge::ValueMessage{{}, 1, 0})},
            {MessageId::AddRTExportAVDataForBuf, Saved(bridge::BufferMessage{{}, 9, 0, pixels, 9})},
            {MessageId::AddRTExportAVData,
             Saved(bridge::AVDataMessage{{}, 2, pixels, 9, pixels, 3, 0, 0})},
            {MessageId::StopRTExport, Saved(bridge::StopRTExportMessage())},
            {MessageId::CreateIconBmp,
             Saved(bridge::IconMessage{{}, root, L"0001AB", {2, 2}, pixels, 0})},
            {MessageId::SetWriteBlockSize, Saved(bridge::ValueMessage{{}, 4096, 0})},
            {MessageId::GetP2SerialNumber, Saved(bridge::TextPairMessage{{}, root, L"", 0})},
            {MessageId::GetLastError, Saved(bridge::ErrorTextMessage{{}, L"text", 0})},
            {MessageId::RecordedClips, Saved(bridge::ErrorTextMessage{{}, L"text", 0})},
            {MessageId::GetP2BaseClipInfo, Saved(bridge::BaseClipInfoMessage{{}, root, {}, 0})},
        };
    }

    /// Whether four bytes of a request reach into one of its paths. Other paths are honoured: what
    /// they name would be written there, and nobody would remove it.
    bool IsInPath(const Bytes& request, std::size_t at) {
        for (const CString& root : {m_card.Root(), InterfaceRoot(m_to.Path())}) {
            std::string path;
            for (const wchar_t ch : root.View()) {
                path.append({static_cast<char>(ch), '\0'}); // two bytes a character in a message
            }
            const auto found =
                std::search(request.begin(), request.end(), path.begin(), path.end());
            const auto start = static_cast<std::size_t>(found - request.begin());
            if (found != request.end() && at + 4 > start && at < start + path.size()) {
                return true;
            }
        }
        return false;
    }

    test::SocketFolder m_folder;
    test::CardBuilder m_card;
    test::TempFolder m_to;
    pid_t m_worker = 0;
    test::Holdings m_before;
};

TEST_F(HostileHostTest, EveryRequestIsAnsweredHoweverItIsCut) {
    m_before = test::Settled(std::to_string(m_worker));
    const auto card = FilesBelow(m_card.Folder().Path());
    const RawHost host;
    for (const auto& [id, image] : Requests()) {
        for (std::size_t length = 0; length < image.size(); ++length) {
            const Bytes cut(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(length));
            ASSERT_TRUE(host.IsAnswered(Number(id), cut)) << Number(id) << " cut at " << length;
        }
    }
    for (const std::uint32_t unknown : {0U, 1U, 20000U, 20004U, 20023U, 0x7FFFFFFFU}) {
        EXPECT_TRUE(host.IsAnswered(unknown, Bytes(100, 0xFF)));
    }
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
    EXPECT_TRUE(FilesBelow(m_card.Folder().Path()) == card);
}

/// Counts, lengths, sides and identifiers at their largest, wherever in a request they are.
TEST_F(HostileHostTest, EveryRequestIsAnsweredWhateverNumbersItHolds) {
    m_before = test::Settled(std::to_string(m_worker));
    const RawHost host;
    for (const auto& [id, image] : Requests()) {
        for (std::size_t at = 0; at + 4 <= image.size(); at += 2) {
            if (IsInPath(image, at)) {
                continue;
            }
            for (const std::uint32_t number : {0xFFFFFFFFU, 0x7FFFFFFFU}) {
                Bytes wrong = image;
                std::memcpy(wrong.data() + at, &number, sizeof(number));
                ASSERT_TRUE(host.IsAnswered(Number(id), wrong))
                    << Number(id) << ": " << number << " at " << at;
            }
        }
    }
}

TEST_F(HostileHostTest, FloodsAndSilenceHoldUpNobodyElse) {
    m_before = test::Settled(std::to_string(m_worker));
    const auto requests = Requests();
    RawHost host;
    for (std::uint32_t i = 0; i < 3000; ++i) {
        const Bytes noise(i % 40, static_cast<unsigned char>(i % 3 == 0 ? 0xFF : i));
        RawHost::Send(host.Callback(), i % 2 == 0 ? 20003 : 20004, noise); // answers are not read
        RawHost::Send(host.Server(), i % 7 == 0 ? 20023 : 50 + i % 4, noise);
        RawHost::Send(host.Requests(), Number(requests[i % requests.size()].first),
                      requests[i % requests.size()].second);
    }
    EXPECT_LT(test::TimeOf(
                  [] { EXPECT_TRUE(RawHost().IsAnswered(Number(MessageId::SetSystemType), {})); }),
              test::kSlack);
    EXPECT_LT(test::TimeOf([&] { host.Close(); }), test::kSlack);
}

/// Each request, and the channels closed before its answer is there or read.
TEST_F(HostileHostTest, AHostThatLeavesInTheMiddleIsForgotten) {
    m_before = test::Settled(std::to_string(m_worker));
    const auto card = FilesBelow(m_card.Folder().Path());
    for (const auto& [id, image] : Requests()) {
        for (const int microseconds : {0, 300, 3000}) {
            RawHost host;
            EXPECT_TRUE(RawHost::Send(host.Callback(), 20003, Bytes(4))); // progress, unanswered
            EXPECT_TRUE(RawHost::Send(host.Requests(), Number(id), image));
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
        }
    }
    EXPECT_TRUE(test::IsBackTo(m_before, 0, std::to_string(m_worker)));
    EXPECT_TRUE(FilesBelow(m_card.Folder().Path()) == card);
    for (const auto& [name, content] : FilesBelow(m_to.Path())) {
        // The icon is one that was asked for.
        EXPECT_TRUE(name.ends_with(".BMP") || (card.count(name) == 1 && card.at(name) == content))
            << name;
    }
}

} // namespace
} // namespace nqp2::worker
