// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// A host that speaks to a running worker by itself and says what no library would.

#include "bridge/messages.h"
#include "tests/worker/worker_stage.h"

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
        requests = Host().CreateChannel(bridge::kProxyChannelId, test::kRequestSize,
                                        test::kRequestSize, kPatience, kPatience);
        callback = Host().OpenSubChannel(requests, bridge::kProxyChannelId, kSmall, kSmall,
                                         kForEver, kForEver);
        server = Host().OpenSubChannel(callback, bridge::kRequestServerId, kSmall, kSmall, kForEver,
                                       kForEver);
        EXPECT_TRUE(requests != 0 && callback != 0 && server != 0);
    }
    RawHost(const RawHost&) = delete;
    RawHost& operator=(const RawHost&) = delete;
    ~RawHost() { Close(); }

    void Close() {
        for (ChannelHandle* each : {&requests, &callback, &server}) {
            Host().CloseChannel(each);
        }
    }
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
        return Send(requests, id, bytes, true) &&
               test::NextId(Host(), requests) == static_cast<std::int32_t>(id);
    }

    ChannelHandle requests = 0;
    ChannelHandle callback = 0;
    ChannelHandle server = 0;
};

class HostileHostTest : public testing::Test {
protected:
    HostileHostTest() {
        R8XDCAMParser_ResetSysInterface(); // the library connects nothing beside
        EXPECT_TRUE(RawHost().IsAnswered(Number(MessageId::SetSystemType), {}));
        m_before = test::Settled(std::to_string(m_worker));
    }
    ~HostileHostTest() override {
        EXPECT_TRUE(test::IsBackTo(m_before, 0, std::to_string(m_worker)));
        EXPECT_TRUE(RawHost().IsAnswered(Number(MessageId::SetSystemType), {})) << "others";
        EXPECT_EQ(kill(m_worker, 0), 0) << "the worker it was";
        EXPECT_LT(test::TimeOf([] { LeaveWorker(); }), test::kSlack);
    }

    bridge::RewrapMessage Rewrap(const CString& root) {
        bridge::RewrapMessage message;
        message.request.target = root + L"\\file.mov";
        message.request.parts.Add({L"0001AB", root + L"\\CONTENTS\\VIDEO\\0001AB.MXF", {}});
        return message;
    }
    /// Requests that would be good ones.
    std::vector<std::pair<MessageId, Bytes>> Requests() {
        auto info = m_stage.Transfer(m_stage.card.Root(), m_stage.To());
        info.relatedClips.Add({});
        CStringArray names;
        names.Add(L"0001AB");
        bridge::RTExportParamMessage parameters;
        parameters.text1 = m_stage.card.Root();
        parameters.relatedClips.Add({});
        const unsigned char pixels[12] = {};
        const CString root = m_stage.To();
        return {
            {MessageId::ImportFile, Saved(bridge::ImportFileMessage{{}, info, 0})},
            {MessageId::ExportFile, Saved(bridge::ExportFileMessage{{}, info, names, 0})},
            {MessageId::DeleteFile, Saved(bridge::TextPairMessage{{}, L"0001AB", root, 0})},
            {MessageId::SetRTExportParam, Saved(parameters)},
            {MessageId::StartRTExport, Saved(bridge::ValueMessage{{}, 1, 0})},
            {MessageId::AddRTExportAVDataForBuf, Saved(bridge::BufferMessage{{}, 9, 0, pixels, 9})},
            {MessageId::AddRTExportAVData,
             Saved(bridge::AVDataMessage{{}, 2, pixels, 9, pixels, 3, 0, 0})},
            {MessageId::StopRTExport, Saved(bridge::StopRTExportMessage())},
            {MessageId::CreateIconBmp,
             Saved(bridge::IconMessage{{}, root, L"0001AB", {2, 2}, pixels, 0})},
            {MessageId::GetP2SerialNumber, Saved(bridge::TextPairMessage{{}, root, L"", 0})},
            {MessageId::RecordedClips, Saved(bridge::ErrorTextMessage{{}, L"text", 0})},
            {MessageId::MakePictures, Saved(bridge::PicturesMessage{{}, names, {80, 60}, {}, 0})},
            {MessageId::DescribeMedia, Saved(bridge::MediaMessage{{}, root, {}, {}, 0, 0})},
            {MessageId::Rewrap, Saved(Rewrap(root))},
            {MessageId::GetP2BaseClipInfo, Saved(bridge::BaseClipInfoMessage{{}, root, {}, 0})},
        };
    }

    WorkerStage m_stage;
    const pid_t m_worker = m_stage.StartWorker();
    test::Holdings m_before;
};

TEST_F(HostileHostTest, FloodsAndSilenceHoldUpNobodyElse) {
    const auto all = Requests();
    RawHost host;
    for (std::uint32_t i = 0; i < 3000; ++i) {
        const Bytes noise(i % 40, static_cast<unsigned char>(i % 3 == 0 ? 0xFF : i));
        RawHost::Send(host.callback, i % 2 == 0 ? 20003 : 20004, noise); // answers are not read
        RawHost::Send(host.server, i % 7 == 0 ? 20023 : 50 + i % 4, noise);
        RawHost::Send(host.requests, Number(all[i % all.size()].first), all[i % all.size()].second);
    }
    EXPECT_LT(test::TimeOf(
                  [] { EXPECT_TRUE(RawHost().IsAnswered(Number(MessageId::SetSystemType), {})); }),
              test::kSlack);
    EXPECT_LT(test::TimeOf([&] { host.Close(); }), test::kSlack);
}

/// Each request, and the channels closed before its answer is there or read.
TEST_F(HostileHostTest, AHostThatLeavesInTheMiddleIsForgotten) {
    const auto card = FilesBelow(m_stage.card.Folder().Path());
    for (const auto& [id, image] : Requests()) {
        for (const int microseconds : {0, 300, 3000}) {
            RawHost host;
            EXPECT_TRUE(RawHost::Send(host.callback, 20003, Bytes(4))); // progress, unanswered
            EXPECT_TRUE(RawHost::Send(host.requests, Number(id), image));
            std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
        }
    }
    EXPECT_TRUE(test::IsBackTo(m_before, 0, std::to_string(m_worker)));
    EXPECT_TRUE(FilesBelow(m_stage.card.Folder().Path()) == card);
    for (const auto& [name, content] : FilesBelow(m_stage.to.Path())) {
        // The icon is one that was asked for.
        EXPECT_TRUE(name.ends_with(".BMP") || (card.count(name) == 1 && card.at(name) == content))
            << name;
    }
}

} // namespace
} // namespace nqp2::worker
