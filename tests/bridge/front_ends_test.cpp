// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/MediaDescription.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "NQP2ParserU/Rewrap.h"
#include "NQP2ParserU/SmallPictures.h"
#include "tests/bridge/worker_test.h"
#include "tests/ingest/ingest_test.h"

#include <functional>

namespace nqp2::bridge {
namespace {

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

/// Something to write into, for the length of a call.
template <class Value>
Value& Fresh(Value&& value = Value()) {
    return value;
}

using Related = CArray<stu_R8PRelationClipInfo>;

// clang-format off
const FrontEnd kFrontEnds[] = {
    {"SetSystemType", 20002, [](auto& p) { return p.SetSystemType(VS_50P); }, 1, 1, 1, 1, 1},
    {"ImportFile", 20005, [](auto& p) { return p.ImportFile(Fresh<stu_R8P2TransInfo>()); },
     1, 1, 1, 0, 0},
    {"GetUploadOffset", 20006, [](auto& p) {
         std::uint32_t offsets[] = {5, 6};
         const int result = p.GetUploadOffset(offsets[0], offsets[1]);
         return offsets[0] + offsets[1] == 0 ? result : -7;
     }, 1, 1, 1, 1, 1},
    {"ExportFile", 20007, [](auto& p) {
         EXPECT_EQ(p.ExportFile(nullptr, Fresh<CStringArray>()), 0);
         return p.ExportFile(&Fresh<stu_R8P2TransInfo>(), Fresh<CStringArray>());
     }, 0, -1, 0, 1, 7},
    {"DeleteFileW", 20008, [](auto& p) { return p.DeleteFileW(L"a", L""), 0; }, 0, 0, 0, 0, 0},
    {"SetRTExportParam", 20010, [](auto& p) {
         return p.SetRTExportParam(CT_AVCHD_1280_720_25P, {}, {}, nullptr, L"", L"", L"", 1,
                                   Fresh<Related>(), 2, 3);
     }, 0, 0, 0, 1, 1},
    {"StartRTExport", 20011, [](auto& p) { return p.StartRTExport(9); }, 0, 0, 0, 1, 1},
    {"StopRTExport", 20012, [](auto& p) { return p.StopRTExport(1, 2); }, 0, 0, 0, 1, 1},
    {"AddRTExportAVDataForBuf", 20013,
     [](auto& p) { return p.AddRTExportAVDataForBuf(1, Fresh<unsigned char*>()); }, 0, 0, 0, 1, 1},
    {"AddRTExportAVData", 20014,
     [](auto& p) { return p.AddRTExportAVData(2, nullptr, 0, nullptr, 0, 1); }, 0, -1, 0, 1, 1},
    {"CreateIconBmp", 20016,
     [](auto& p) { return p.CreateIconBmp(L"a", L"b", nullptr, {80, 60}); }, 0, -1, 0, 1, 1},
    {"SetWriteBlockSize", 20017, [](auto& p) { return p.SetWriteBlockSize(4096); }, 0, 0, 0, 1, 0},
    {"CloseAllFile", 20018, [](auto& p) { return p.CloseAllFile(), 0; }, 0, 0, 0, 0, 0},
    {"GetP2SerialNumber", 20019,
     [](auto& p) { return p.GetP2SerialNumber(L"E:", Fresh<CString>()); }, 1, 1, 1, 0, 0},
    {"GetLastError", 20020, [](auto& p) { return p.GetLastError().GetLength(); }, 0, 0, 0, 0, 0},
    {"SetRTExportExtraParam", 20021, [](auto& p) { return p.SetRTExportExtraParam(3); },
     0, 0, 0, 1, 1},
    {"GetP2BaseClipInfo", 20022,
     [](auto& p) { return p.GetP2BaseClipInfo(L"E:\\a", Fresh<NQP2BaseClipInfo>()); },
     0, -1, 0, 1, 1},
    {"DescribeMedia", 21002, [](auto& p) {
         return static_cast<int>(DescribeMedia(p, L"E:\\a", Fresh<ClipMetadata>()));
     }, 1, 2, 1, 0, 0},
    {"Rewrap", 21003, [](auto& p) {
         return static_cast<int>(Rewrap(p, {}, Fresh<RewrapResult>()));
     }, 2, 3, 2, 0, 0},
};
// clang-format on

/// A parser with an open proxy that has not registered for progress.
class FrontEndTest : public WorkerTest {
protected:
    FrontEndTest() {
        m_channels.Refuse("callback GetSendBuffer");
        m_parser = std::make_unique<CNQP2Parser>();
    }

    std::unique_ptr<CNQP2Parser> m_parser;
};

TEST_F(FrontEndTest, EachMapsWhatComesOfItInItsOwnWay) {
    struct Outcome {
        const char* name;
        std::int64_t FrontEnd::*expected;
        std::function<void()> setUp;
    };
    const Outcome outcomes[] = {
        {"0", &FrontEnd::onZero, [&] { AnswerWith(0); }},
        {"1", &FrontEnd::onOne, [&] { AnswerWith(1); }},
        {"7", &FrontEnd::onSeven, [&] { AnswerWith(7); }},
        {"a reply cut off", &FrontEnd::onZero, [&] { AnswerWith(Bytes(1, 1)); }},
        {"an empty reply", &FrontEnd::failed, [&] { AnswerWith(Bytes()); }},
        {"no buffer", &FrontEnd::failed, [&] { m_channels.Refuse("request GetSendBuffer"); }},
        {"an empty buffer", &FrontEnd::failed, [&] { m_channels.capacity = 0; }},
        {"not sent", &FrontEnd::failed, [&] { m_channels.Refuse("request Send"); }},
        {"closed", &FrontEnd::failed, [&] { m_channels.Refuse("request Receive"); }},
        {"another reply", &FrontEnd::failed,
         [&] {
             m_channels.SetScript([&](const std::string& channel, std::uint32_t id,
                                      const Bytes& b) { m_channels.Push(channel, id + 1, b); });
         }},
        {"no proxy", &FrontEnd::withoutProxy, [&] { m_parser->Release(); }},
        {"no table", &FrontEnd::failed,
         [&] {
             R8P2Parser_SetSysInterface(nullptr, nullptr);
             m_parser = std::make_unique<CNQP2Parser>();
         }},
    };
    for (const Outcome& outcome : outcomes) {
        AnswerWith(1);
        outcome.setUp();
        for (const FrontEnd& each : kFrontEnds) {
            EXPECT_EQ(each.call(*m_parser), each.*outcome.expected)
                << each.name << ": " << outcome.name;
            if (outcome.expected == &FrontEnd::onOne) {
                EXPECT_EQ(m_channels.Sent("request").back().first, each.message) << each.name;
            }
        }
        m_channels.Refuse("");
        m_channels.capacity = FakeChannels::kUsualSize;
    }
}

TEST_F(FrontEndTest, DataOfTheWorkerStaysInABufferThatGrows) {
    constexpr std::uint32_t kBuffer = 4147200;
    unsigned char* data = nullptr;
    unsigned char* before = nullptr;
    for (const std::uint32_t length : {3U, kBuffer, kBuffer + 1, 0U}) {
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

TEST_F(FrontEndTest, PicturesAreThoseOfTheFilesThatWereAskedForOrNone) {
    const unsigned char jpeg[] = {0xFF, 0xD8};
    CStringArray files;
    files.Add(L"E:\\a");
    files.Add(L"E:\\b");
    for (const std::int64_t count : {0, 1, 2, 3, 4000}) {
        PicturesMessage reply;
        reply.result = 1;
        for (std::int64_t i = 0; i < count; ++i) {
            reply.pictures.Add({L"", jpeg, sizeof(jpeg)});
        }
        Bytes image(static_cast<std::size_t>(reply.Size()));
        ASSERT_EQ(reply.Save(image.data(), reply.Size()), reply.Size());
        for (const std::size_t cut : {std::size_t{0}, std::size_t{1}, image.size()}) {
            AnswerWith(Bytes(image.begin(), image.end() - static_cast<std::ptrdiff_t>(cut)));
            CArray<SmallPicture> pictures;
            const bool isRight = count == files.GetSize() && cut == 0;
            EXPECT_EQ(MakeSmallPictures(*m_parser, files, {80, 60}, pictures),
                      isRight ? PicturesStatus::Made : PicturesStatus::NoWorker)
                << count << ' ' << cut;
            EXPECT_EQ(pictures.GetSize(), isRight ? count : 0);
        }
    }
}

class DeleteFileTest : public ingest::IngestTest {};

TEST_F(DeleteFileTest, TakesTheClipOutOfTheIngestListAlsoWithoutAProxy) {
    ASSERT_EQ(Add({{L"0001AA", {{1, 2}}}, {L"0002BB", {{3, 4}}}, {L"0003CC", {{5, 6}}}}), 0);
    m_parser.DeleteFileW(L"0001AA", m_card.Root());
    m_parser.Release();
    m_parser.DeleteFileW(L"0002BB", m_card.Root());
    m_parser.DeleteFileW(m_card.Root(), L"0003CC");
    EXPECT_EQ(Listed(), Rows{"0003CC 5-6"}) << "the clip comes first";
}

} // namespace
} // namespace nqp2::bridge
