// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/WorkerFields.h"
#include "tests/bridge/worker_test.h"
#include "tests/ingest/ingest_test.h"

#include <functional>

namespace nqp2::bridge {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Call = std::function<std::int64_t(CNQP2Parser& parser)>;

/// What a front end answers. No two kinds are alike.
struct FrontEnd {
    const char* name;
    std::uint32_t message;
    Call call;
    std::int64_t withoutProxy;
    std::int64_t failed; ///< the channel
    std::int64_t onZero; ///< result fields of the reply
    std::int64_t onOne;
    std::int64_t onSeven;
};

const FrontEnd kFrontEnds[] = {
    {"SetSystemType", 20002, [](auto& p) { return p.SetSystemType(VS_50P); }, 1, 1, 1, 1, 1},
    {"ImportFile", 20005,
     [](auto& p) {
         stu_R8P2TransInfo info;
         return p.ImportFile(info);
     },
     1, 1, 1, 0, 0},
    {"GetUploadOffset", 20006,
     [](auto& p) {
         std::uint32_t first = 5;
         std::uint32_t second = 6;
         const int result = p.GetUploadOffset(first, second);
         EXPECT_EQ(first + second, 0U);
         return result;
     },
     1, 1, 1, 1, 1},
    {"ExportFile", 20007,
     [](auto& p) {
         stu_R8P2TransInfo info;
         CStringArray names;
         EXPECT_EQ(p.ExportFile(nullptr, names), 0);
         return p.ExportFile(&info, names);
     },
     0, -1, 0, 1, 7},
    {"DeleteFileW", 20008, [](auto& p) { return p.DeleteFileW(L"a", L""), 0; }, 0, 0, 0, 0, 0},
    {"SetRTExportParam", 20010,
     [](auto& p) {
         CArray<stu_R8PRelationClipInfo> related;
         return p.SetRTExportParam(CT_AVCHD_1280_720_25P, {}, {}, nullptr, L"", L"", L"", 1,
                                   related, 2, 3);
     },
     0, 0, 0, 1, 1},
    {"StartRTExport", 20011, [](auto& p) { return p.StartRTExport(9); }, 0, 0, 0, 1, 1},
    {"StopRTExport", 20012, [](auto& p) { return p.StopRTExport(1, 2); }, 0, 0, 0, 1, 1},
    {"AddRTExportAVDataForBuf", 20013,
     [](auto& p) {
         unsigned char mine = 0;
         unsigned char* data = &mine;
         const int result = p.AddRTExportAVDataForBuf(1, data);
         EXPECT_NE(data, &mine);
         return result;
     },
     0, 0, 0, 1, 1},
    {"AddRTExportAVData", 20014,
     [](auto& p) { return p.AddRTExportAVData(2, nullptr, 0, nullptr, 0, 1); }, 0, -1, 0, 1, 1},
    {"CreateIconBmp", 20016,
     [](auto& p) {
         return p.CreateIconBmp(L"a", L"b", nullptr, {80, 60});
     },
     0, -1, 0, 1, 1},
    {"SetWriteBlockSize", 20017, [](auto& p) { return p.SetWriteBlockSize(4096); }, 0, 0, 0, 1, 0},
    {"CloseAllFile", 20018, [](auto& p) { return p.CloseAllFile(), 0; }, 0, 0, 0, 0, 0},
    {"GetP2SerialNumber", 20019,
     [](auto& p) {
         CString serial;
         return p.GetP2SerialNumber(L"E:", serial);
     },
     1, 1, 1, 0, 0},
    {"GetLastError", 20020, [](auto& p) { return p.GetLastError().GetLength(); }, 0, 0, 0, 0, 0},
    {"SetRTExportExtraParam", 20021, [](auto& p) { return p.SetRTExportExtraParam(3); }, 0, 0, 0, 1,
     1},
    {"GetP2BaseClipInfo", 20022,
     [](auto& p) {
         NQP2BaseClipInfo info;
         return p.GetP2BaseClipInfo(L"E:\\a", info);
     },
     0, -1, 0, 1, 1},
};

/// A parser with an open proxy that has not registered for progress.
class FrontEndTest : public WorkerTest {
protected:
    FrontEndTest() {
        m_channels.Refuse("callback GetSendBuffer");
        m_parser = std::make_unique<CNQP2Parser>();
    }

    /// The calls that one call of the parser makes.
    Rows CallsOf(const Call& call) {
        const std::size_t before = m_channels.Calls("request").size();
        call(*m_parser);
        Rows calls = m_channels.Calls("request");
        calls.erase(calls.begin(), calls.begin() + static_cast<long>(before));
        return calls;
    }

    std::unique_ptr<CNQP2Parser> m_parser;
};

TEST_F(FrontEndTest, EachMapsTheWorkersAnswerInItsOwnWay) {
    for (const FrontEnd& each : kFrontEnds) {
        const std::pair<std::uint32_t, std::int64_t> answers[] = {
            {0, each.onZero}, {1, each.onOne}, {7, each.onSeven}};
        for (const auto& [result, expected] : answers) {
            AnswerWith(result);
            EXPECT_EQ(each.call(*m_parser), expected) << each.name << " on " << result;
            EXPECT_EQ(m_channels.Sent("request").back().first, each.message) << each.name;
        }
    }
    m_parser->Release();
    for (const FrontEnd& each : kFrontEnds) {
        const std::size_t before = m_channels.Calls().size();
        EXPECT_EQ(each.call(*m_parser), each.withoutProxy) << each.name << " without a proxy";
        EXPECT_EQ(m_channels.Calls().size(), before) << each.name;
    }
}

TEST_F(FrontEndTest, EachFailsWithTheChannelAtEveryStep) {
    const std::pair<const char*, std::function<void()>> faults[] = {
        {"no buffer", [&] { m_channels.Refuse("request GetSendBuffer"); }},
        {"an empty buffer", [&] { m_channels.SetCapacity(0); }},
        {"not sent", [&] { m_channels.Refuse("request Send"); }},
        {"closed", [&] { m_channels.Refuse("request Receive"); }},
        {"an empty reply", [&] { AnswerWith(Bytes()); }},
        {"another reply",
         [&] {
             m_channels.SetScript([&](const std::string& channel, std::uint32_t id,
                                      const Bytes& b) { m_channels.Push(channel, id + 1, b); });
         }},
    };
    for (const auto& [name, setUp] : faults) {
        AnswerWith(1);
        setUp();
        for (const FrontEnd& each : kFrontEnds) {
            EXPECT_EQ(each.call(*m_parser), each.failed) << each.name << ": " << name;
        }
        m_channels.Allow();
        m_channels.SetCapacity(65536);
    }
    R8P2Parser_SetSysInterface(nullptr, nullptr);
    CNQP2Parser withoutTable;
    for (const FrontEnd& each : kFrontEnds) {
        EXPECT_EQ(each.call(withoutTable), each.failed) << each.name << " without a table";
    }
}

TEST_F(FrontEndTest, CutRepliesAreRefusals) {
    for (const FrontEnd& each : kFrontEnds) {
        AnswerWith(1);
        each.call(*m_parser);
        Bytes whole = m_channels.Sent("request").back().second;
        whole.back() = 1; // whatever it says, it is cut off
        for (std::size_t length = 0; length < whole.size(); ++length) {
            AnswerWith(Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
            EXPECT_EQ(each.call(*m_parser), length == 0 ? each.failed : each.onZero)
                << each.name << " cut at " << length;
        }
        AnswerWith(1);
        EXPECT_EQ(each.call(*m_parser), each.onOne) << each.name << " goes on";
    }
}

TEST_F(FrontEndTest, ARequestReleasesWhatItReceivedAndNothingElse) {
    const Call stop = [](CNQP2Parser& parser) { return parser.StopRTExport(1, 2); };
    const std::string grant = "request GetSendBuffer";
    const std::string send = "request Send 20012 12";
    AnswerWith(1);
    EXPECT_THAT(CallsOf(stop), ElementsAre(grant, send, "request Receive", "request Release 12"));
    EXPECT_EQ(m_channels.Sent("request").back().second, Image({1, 2, 0}));
    AnswerWith(Bytes());
    EXPECT_THAT(CallsOf(stop), ElementsAre(grant, send, "request Receive", "request Release"));
    AnswerWith(Image({1, 2}));
    m_channels.SetCapacity(11); // the message does not fit: the worker is to refuse it
    EXPECT_THAT(CallsOf(stop),
                ElementsAre(grant, "request Send 20012 0", "request Receive", "request Release 8"));
    m_channels.Refuse("request Send");
    EXPECT_THAT(CallsOf(stop), ElementsAre(grant, "request Send 20012 0"));
    for (const unsigned char type : Bytes{0, 1}) { // are never sent
        EXPECT_THAT(CallsOf([&](CNQP2Parser& parser) {
                        return parser.AddRTExportAVData(type, nullptr, 0, nullptr, 0, 0);
                    }),
                    IsEmpty());
    }
}

TEST_F(FrontEndTest, RepliesReachTheCallerAlsoWithRefusals) {
    const auto answerWith = [&](const auto& message) {
        Bytes bytes(4096);
        bytes.resize(static_cast<std::size_t>(message.Save(bytes.data(), 4096)));
        AnswerWith(bytes);
    };
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    answerWith(UploadOffsetMessage{{}, 0xFFFFFFFF, 2, 0});
    m_parser->GetUploadOffset(first, second);
    EXPECT_EQ(first, 0xFFFFFFFF);
    EXPECT_EQ(second, 2U);
    CString serial;
    answerWith(TextPairMessage{{}, L"", L"ABC12345", 0});
    EXPECT_EQ(m_parser->GetP2SerialNumber(L"E:", serial), 1);
    EXPECT_EQ(serial, L"ABC12345");

    stu_R8P2TransInfo theirs;
    TransferFields(theirs).clipName = L"theirs";
    stu_R8P2TransInfo info;
    CStringArray names;
    answerWith(ExportFileMessage{{}, theirs, names, 0});
    EXPECT_EQ(m_parser->ExportFile(&info, names), 0);
    EXPECT_TRUE(TransferFields(info).clipName.IsEmpty()) << "an export's record stays";
    answerWith(ImportFileMessage{{}, theirs, 0});
    EXPECT_EQ(m_parser->ImportFile(info), 1);
    EXPECT_EQ(TransferFields(info).clipName, L"theirs");

    BaseClipInfoMessage clip;
    clip.info.codec = L"DVSD";
    NQP2BaseClipInfo clipInfo;
    answerWith(clip);
    EXPECT_EQ(m_parser->GetP2BaseClipInfo(L"E:\\a", clipInfo), 0);
    AnswerWith(Bytes(3));
    EXPECT_EQ(m_parser->GetP2BaseClipInfo(L"E:\\a", clipInfo), 0);
    EXPECT_EQ(clipInfo.codec, L"DVSD") << "nothing to assign in a broken reply";
}

TEST_F(FrontEndTest, DataOfTheWorkerStaysInABufferThatGrows) {
    constexpr std::uint32_t kBuffer = 4147200;
    unsigned char* data = nullptr;
    unsigned char* before = nullptr;
    for (const std::uint32_t length : {3U, kBuffer, kBuffer + 1, kBuffer * 2, 0U}) {
        Bytes reply = Image({1, 1, length});
        reply.insert(reply.end(), length, static_cast<unsigned char>(length % 251));
        AnswerWith(reply);
        EXPECT_EQ(m_parser->AddRTExportAVDataForBuf(1, data), 1) << length;
        ASSERT_NE(data, nullptr) << length;
        EXPECT_EQ(Bytes(data, data + length), Bytes(reply.begin() + 12, reply.end())) << length;
        EXPECT_TRUE(length != kBuffer || data == before) << "large enough";
        before = data;
    }
    AnswerWith(Image({1, 1, 5, 0}));
    EXPECT_EQ(m_parser->AddRTExportAVDataForBuf(1, data), 0);
    EXPECT_EQ(data, nullptr) << "promises more than arrived";
}

class DeleteFileTest : public ingest::IngestTest {};

TEST_F(DeleteFileTest, TakesTheClipOutOfTheIngestListWithOrWithoutAProxy) {
    for (const bool hasProxy : {true, false}) {
        ASSERT_EQ(Add({{L"0001AA", {{1, 2}}}, {L"0002BB", {{3, 4}}}}), 0);
        if (!hasProxy) {
            m_parser.Release();
        }
        m_parser.DeleteFileW(m_card.Root(), L"0001AA");
        EXPECT_EQ(Listed().size(), 2U) << "the clip comes first";
        m_parser.DeleteFileW(L"0001AA", m_card.Root());
        EXPECT_THAT(Listed(), ElementsAre("0002BB 3-4"));
        m_parser.Init();
        Delete(L"0002BB");
    }
}

} // namespace
} // namespace nqp2::bridge
