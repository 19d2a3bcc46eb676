// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/unicode.h"
#include "tests/clips/card_test.h"
#include "tests/clips/clip_show.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::clips {
namespace {

using test::ClipValues;

constexpr const char* kCodec = "EssenceList/Video/Codec";
constexpr const char* kClass = "EssenceList/Video/Codec@Class";
constexpr const char* kRate = "EssenceList/Video/FrameRate";
constexpr const char* kDropFlag = "EssenceList/Video/FrameRate@DropFrameFlag";
constexpr const char* kTimecode = "EssenceList/Video/StartTimecode";
constexpr const char* kTimecodeType = "EssenceList/Video/TimecodeType";
constexpr const char* kPixel = "EssenceList/Video/ActivePixel";
constexpr const char* kLine = "EssenceList/Video/ActiveLine";
constexpr const char* kDepth = "EssenceList/Video/BitDepth";
constexpr const char* kNewAudio = "EssenceList/+Audio";
constexpr const char* kChannel = "EssenceList/Audio/Channel";
constexpr const char* kId = "GlobalClipID";
constexpr const char* kEnd = "ClipMetadata/Shoot/EndDate";
constexpr const char* kProxyFormat = "ClipMetadata/Proxy/ProxyFormat";
constexpr const char* kProxyVideo = "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/";
constexpr const char* kNewProxyAudio = "ClipMetadata/Proxy/ProxyElementList/+ProxyAudio";
constexpr const char* kMemo = "ClipMetadata/MemoList/+Memo/Offset";

struct Row {
    const char* field;
    std::string named;   ///< by name, "" for the value of a fresh record
    std::string scanned; ///< by the scan
    const char* why;
    ClipValues values = {};
    std::vector<const char*> files = {};
};

Row Given(const char* field, const std::string& named, const std::string& scanned, const char* why,
          ClipValues values = {}, std::vector<const char*> files = {}) {
    return {field, named, scanned, why, std::move(values), std::move(files)};
}

ClipValues Coded(const char* codec, const char* codecClass) {
    return {{kCodec, codec}, {kClass, codecClass}};
}

ClipValues Channels(std::size_t count) {
    return ClipValues(count, {kNewAudio, ""});
}

ClipValues Family(const char* codec, ClipValues more = {}) {
    more.insert(more.begin(), {kCodec, codec});
    return more;
}

/// A timecode at a rate, with or without drop frame.
Row Timecode(const char* rate, const char* flag, const char* text, const char* frames) {
    return {
        "StartTimecode", "", frames, rate, {{kRate, rate}, {kDropFlag, flag}, {kTimecode, text}}};
}

std::vector<Row> ClassRows() {
    std::vector<Row> rows = {
        Given("AvcIntraClass50", "1", "1", "the one name that both know",
              Coded("AVC-I_1080/50i", "50")),
        Given("AvcIntraClass50", "", "", "class 100", Coded("AVC-I_1080/50i", "100")),
        Given("AvcIntraClass50", "", "", "letter case counts", Coded("avc-i_1080/50i", "50")),
        Given("AvcIntraClass50", "", "", "not one of the six", Coded("DV50_422", "50")),
        Given("CodecClass", "", "50", "stored for any codec", Coded("DV50_422", "50")),
        Given("CodecClass", "", "1", "the first of that local name",
              {{"EssenceList/Video/Codec@xmlns:p", "urn:p"},
               {"EssenceList/Video/Codec@p:Class", "1"},
               {kClass, "2"}}),
        Given("CodecName", "avc-longg420", "avc-longg420-25M", "class joins the name",
              Coded("avc-longg420", "25")),
        Given("CodecName", "AVC-LongG422", "AVC-LongG422-M", "without class",
              Family("AVC-LongG422")),
        Given("CodecName", "AVC-LongX", "AVC-LongX", "a long-GOP name of no known kind",
              Coded("AVC-LongX", "50")),
    };
    for (const char* const codec : {"AVC-I_1080/25p", "AVC-I_720/50p", "AVC-I_1080/59.94i",
                                    "AVC-I_1080/29.97p", "AVC-I_720/59.94p"}) {
        rows.push_back(Given("AvcIntraClass50", "", "1", codec, Coded(codec, "50")));
    }
    return rows;
}

std::vector<Row> RasterAndTimeRows() {
    constexpr const char* kHour = "01:00:00:00";
    return {
        Given("ActivePixel", "", "1280", "720 lines", Family("AVC-LongG420", {{kLine, "720"}})),
        Given("ActivePixel", "", "960", "given", Family("AVC-Intra4K_444", {{kPixel, "960"}})),
        Given("ActivePixel", "", "1920", "a number that is none",
              Family("avc-intra4k_422", {{kPixel, "wide"}, {kLine, "1080"}})),
        Given("ActivePixel", "", "", "short Intra names are no family",
              {{kCodec, "AVC-I_1080/50i"}, {kPixel, "720"}}),
        Given("BitDepth", "", "10", "read in the families", Family("AVC-LongX", {{kDepth, "10"}})),
        Given("BitDepth", "", "", "outside the families", {{kCodec, "DV25_420"}, {kDepth, "8"}}),

        Given("DropFrame", "", "0", "flag false", {{kRate, "59.94i"}, {kDropFlag, "false"}}),
        Given("DropFrame", "", "0", "flag 0", {{kRate, "59.94i"}, {kDropFlag, "0"}}),
        Given("DropFrame", "", "", "letter case counts", {{kRate, "50i"}, {kDropFlag, "False"}}),
        Given("DropFrame", "", "", "no flag", {{kRate, "50i"}}),
        Given("DropFrame", "", "0", "a family asks the type",
              Family("AVC-LongG422", {{kTimecodeType, "NonDrop"}, {kDropFlag, "true"}})),
        Given("DropFrame", "", "", "any other type, and not the flag",
              Family("AVC-Intra_422", {{kTimecodeType, "nondrop"}, {kDropFlag, "0"}})),
        Given("DropFrame", "", "", "the type says nothing elsewhere",
              {{kCodec, "DV50_422"}, {kTimecodeType, "NonDrop"}}),
        Timecode("59.94i", "true", kHour, "107892"),
        Timecode("59.94i", "0", kHour, "108000"),
        Timecode("", "", "00:00:01.05", "30"),
        Timecode("50i", "true", "", ""),
        Given("UnusedOffset", "", "42", "read by the scan alone",
              {{"EssenceList/UnusedOffset", "42"}}),
    };
}

std::vector<Row> EssenceRows() {
    const std::string a = "AUDIO\\0001AB";
    const std::string all = a + "00.MXF " + a + "01.MXF " + a + "02.MXF " + a + "03.MXF ";
    const std::string eight = all + a + "04.MXF " + a + "05.MXF " + a + "06.MXF " + a + "07.MXF ";
    const std::string av = "AVCLIP\\0001AB.MXF";
    const std::vector<const char*> fiveFiles = {"AUDIO/0001AB00.MXF", "AUDIO/0001AB01.MXF",
                                                "AUDIO/0001AB02.MXF", "AUDIO/0001AB03.MXF",
                                                "AUDIO/0001AB04.MXF"};
    return {
        Given("VideoPath", "", "VIDEO\\0001AB.MXF", "the scan takes it for granted"),
        Given("VideoPath", "VIDEO\\0001AB.MXF", "VIDEO\\0001AB.MXF", "in lower case", {},
              {"Video/0001ab.mxf"}),
        Given("VideoPath", "VIDEO\\0001AB.MXF", "", "a family looks in AVCLIP alone",
              Family("AVC-Intra_422"), {"VIDEO/0001AB.MXF"}),
        Given("EssenceMask", "", "7", "three descriptions, nothing exists", Channels(3)),
        Given("EssenceMask", "5", "3", "second channel present", Channels(2),
              {"VIDEO/0001AB.MXF", "AUDIO/0001AB01.MXF"}),
        Given("EssenceMask", "30", "1", "five channels present, none described", {}, fiveFiles),
        Given("EssenceMask", "", "", "a family without its file",
              Family("AVC-LongG422", {{kChannel, "4"}})),
        Given("EssenceMask", "", "511", "more than there are slots", Channels(100)),
        Given("EssenceMask", "", "511", "an absurd count",
              Family("AVC-Intra_422", {{kChannel, "2147483647"}}), {"AVCLIP/0001AB.MXF"}),
        Given("EssenceMask", "", "1", "a negative count",
              Family("AVC-Intra_422", {{kChannel, "-2147483648"}}), {"AVCLIP/0001AB.MXF"}),
        Given("AudioPath", "", all + "- - - - ", "one less than described", Channels(5)),
        Given("AudioPath", "", "", "one description", Channels(1)),
        Given("AudioPath", "", eight, "more than there are slots", Channels(100)),
        Given("AudioPath", all + "- - - - ", "", "four are looked for by name", {}, fiveFiles),
        Given("AudioPath", "", av + " " + av + " - - - - - - ", "a family shares its file",
              Family("AVC-Intra_422", {{kChannel, "2"}}), {"AVCLIP/0001AB.MXF"}),
    };
}

class ClipReadersTest : public CardTest {
protected:
    ClipShow Named(const std::string& name = "0001AB") {
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), platform::TextFromUtf8(name), clip), 0);
        return {clip, m_card.Contents()};
    }
    ClipShow Scanned() {
        const CArray<_tag_P2Clip> clips = Scan();
        EXPECT_EQ(clips.GetSize(), 1);
        return {clips.IsEmpty() ? _tag_P2Clip() : clips[0], m_card.Contents()};
    }
    void Check(const Row& row, const std::string& scanned) {
        SCOPED_TRACE(std::string(row.field) + ": " + row.why);
        std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
        m_card.AddClip("0001AB", row.values);
        for (const char* const file : row.files) {
            m_card.AddFile(file);
        }
        EXPECT_EQ(Named()[row.field], row.named) << "by name";
        EXPECT_EQ(Scanned()[row.field], scanned) << "by the scan";
    }
};

TEST_F(ClipReadersTest, DifferInTheseFields) {
    std::vector<Row> rows = ClassRows();
    for (const auto& more : {RasterAndTimeRows(), EssenceRows()}) {
        rows.insert(rows.end(), more.begin(), more.end());
    }
    for (const Row& row : rows) {
        Check(row, row.scanned);
    }
}

/// A value of a clip file and what becomes of it in the record, where it is told by itself.
struct FullRow {
    std::string path;
    const char* value;
    const char* field = "";
    std::string shown = {};
};

/// Values of every field that both read in the same way.
std::vector<FullRow> FullRows() {
    const std::string audio = "EssenceList/Audio/";
    const std::string video = "EssenceList/Video/";
    const std::string related = "Relation/Connection/";
    const std::string proxyAudio = "ClipMetadata/Proxy/ProxyElementList/ProxyAudio/";
    const std::string proxyVideo = kProxyVideo;
    const std::string zeros = "00000000-0000-0000-0000-0000000000";
    const char* const id = "060A2B340101010501010D431300000700112233445566778899AABBCCDDEEFF";
    return {
        {"ClipName", "0001AB", "ClipName", "0001AB"},
        {kId, id, "GlobalClipID", id},
        {"Duration", "250", "Duration", "250"},
        {kCodec, "DV50_422", "CodecName", "DV50_422"},
        {kRate, "50i", "FrameRate", "50i"},
        {video + "AspectRatio", "16:9", "AspectRatio", "16:9"},
        {video + "VideoIndex/StartByteOffset", "32768", "VideoStartByteOffset", "32768"},
        {video + "VideoIndex/DataSize", "5000000000", "VideoDataSize", "5000000000"},
        {audio + "BitsPerSample", "16", "AudioBitsPerSample", "16"},
        {audio + "AudioIndex/StartByteOffset", "-1", "AudioStartByteOffset", "-1"},
        {audio + "AudioIndex/DataSize", " 99999999999999999999", "AudioDataSize",
         "9223372036854775807"},
        {"Relation/OffsetInShot", "6000000000", "OffsetInShot", "6000000000"},
        {"Relation/GlobalShotID", "05", "GlobalShotGuid", zeros + "05"},
        {related + "Top/GlobalClipID", "01", "TopClipGuid", zeros + "01"},
        {related + "Top/ClipName", "TOP", "TopClipName", "TOP"},
        {related + "Top/P2SerialNo.", "T1", "TopSerialNo", "T1"},
        {related + "Next/GlobalClipID", "02", "NextClipGuid", zeros + "02"},
        {related + "Next/ClipName", "NEXT", "NextClipName", "NEXT"},
        {related + "Next/P2SerialNo.", "N1", "NextSerialNo", "N1"},
        {related + "Previous/GlobalClipID", "03", "PreviousClipGuid", zeros + "03"},
        {related + "Previous/ClipName", "PREV", "PreviousClipName", "PREV"},
        {related + "Previous/P2SerialNo.", "P1", "PreviousSerialNo", "P1"},
        {"ClipMetadata/UserClipName", "Straßenbahn & <Co>", "UserClipName", "Straßenbahn & <Co>"},
        {kStart, "2005-02-01T06:00:00+08:00", "StartDate", "2005-02-01T06:00:00"},
        {kEnd, "2005-02-01T08:59:00-05:00", "EndDate", "2005-02-01T08:59:00"},
        // What a memo does not say overwrites the defaults of a fresh one.
        {"ClipMetadata/MemoList/Memo/Offset", "10", "Memos",
         "10,Jo,first,AIFF,48000,24,1|20,,,,0,0,1|30,,,,0,0,1"},
        {"ClipMetadata/MemoList/Memo/Person", "Jo"},
        {"ClipMetadata/MemoList/Memo/Text", "first"},
        {"ClipMetadata/MemoList/Memo/VoiceFormat", "AIFF"},
        {"ClipMetadata/MemoList/Memo/VoiceSamplingRate", "48000"},
        {"ClipMetadata/MemoList/Memo/VoiceBitsPerSample", "24"},
        {kMemo, "20"},
        {kMemo, "10"},
        {kMemo, "30"},
        {kMemo, "20"},
        {kProxyFormat, "mov", "ProxyFormat", "2"},
        {proxyVideo + "ProxyVideoBitRate", "1500", "ProxyVideoBitRate", "1500"},
        {proxyVideo + "ProxyVideoCodec", "MPEG-4", "ProxyVideoCodec", "2"},
        {proxyVideo + "ProxyFrameRate", "25p", "ProxyFrameRate", "25p"},
        {proxyVideo + "ProxyResolution", "SIF_PAL", "ProxyResolution", "2"},
        {proxyVideo + "AspectRatio", "4:3", "ProxyAspectRatio", "4:3"},
        {proxyAudio + "ProxyAudioCodec", "LPCM", "ProxyAudioCodec", "2"},
        {proxyAudio + "ProxyAudioBitRate", "64", "ProxyAudioBitRate", "64"},
        {proxyAudio + "ProxySamplingRate", "24000", "ProxySamplingRate", "24000"},
        {kNewProxyAudio, "", "ProxyAudioChannels", "2"},
        {kNewProxyAudio, "", "ProxyAudioMask", "7"},
    };
}

TEST_F(ClipReadersTest, ReadEverythingElseAlike) {
    ClipValues full;
    ClipShow::Shown expected = {
        {"GlobalClipGuid", "00112233-4455-6677-8899-aabbccddeeff"},
        {"ClipIdDigit", "7"},
        {"ShootStartTime", "38384.25000"},
        {"EssenceMask", "1"},
        {"ProxyExt", ".MOV"},
        {"ProxyFilePath", "PROXY\\0001AB.MOV"},
        {"ProxyPath", "PROXY\\0001AB.MP4"},
        {"IconPath", "ICON\\0001AB.BMP"},
        {"XmlPath", "CLIP\\0001AB.XML"},
        {"VideoPath", "VIDEO\\0001AB.MXF"},
    };
    for (const FullRow& row : FullRows()) {
        full.push_back({row.path, row.value});
        if (!row.shown.empty()) {
            expected[row.field] = row.shown;
        }
    }
    for (const char* const file :
         {"VIDEO/0001AB.MXF", "ICON/0001AB.BMP", "PROXY/0001AB.MOV", "PROXY/0001AB.MP4"}) {
        m_card.AddFile(file);
    }
    ClipShow::Shown expectedByName = expected;
    expectedByName["ProxyVideoCodecName"] = "MPEG-4";
    constexpr const char* kForeign = R"(xmlns="urn:x" xmlns:p="urn:y")";
    for (const char* const root : {test::kClipNamespace, "", kForeign}) {
        ClipValues values = full;
        values.push_back({"ClipMetadata@xmlns", "urn:z"}); // a second one may start deeper down
        m_card.AddFile("CLIP/0001AB.XML", test::ClipXml(values, root));
        EXPECT_EQ(Scanned().Fields(), expected) << root;
        EXPECT_EQ(Named().Fields(), expectedByName) << root;
    }
}

TEST_F(ClipReadersTest, TreatTheseCircumstancesAlike) {
    const std::string longDate = "2005-02-01T08:58:44.5+08:00";
    const Row rows[] = {
        Given("UserClipName", "0001AB", "", "takes the clip name when it is empty",
              {{"ClipMetadata/UserClipName", ""}}),
        Given("ClipIdDigit", "0", "", "no identifier"),
        Given("ClipIdDigit", "0", "", "no digit", {{kId, "060A2B340101010501010D431300000A"}}),
        Given("GlobalClipGuid", "", "", "not hexadecimal", {{kId, "no identifier"}}),
        Given("Duration", "12", "", "leading digits count", {{"Duration", "\t12 frames"}}),
        Given("ProxyAudioMask", "18446744073709551615", "", "more than the mask has bits",
              ClipValues(70, {kNewProxyAudio, ""})),
        Given("ProxyFilePath", "", "", "the other format's file", {{kProxyFormat, "MOV"}},
              {"PROXY/0001AB.MP4"}),
        Given("ProxyPath", "PROXY\\0001AB.MP4", "", "whatever the format", {{kProxyFormat, "MOV"}},
              {"PROXY/0001AB.MP4"}),
        Given("ShootStartTime", "", "", "wrong length", {{kStart, longDate}}),
        Given("StartDate", "2005-02-01T08:58:44.5", "", "wrong length", {{kStart, longDate}}),
        Given("ShootStartTime", "invalid", "", "month 13", {{kStart, "2005-13-01T08:58:44+08:00"}}),
    };
    for (const Row& row : rows) {
        Check(row, row.named);
    }
}

TEST_F(ClipReadersTest, TheNameIsThatInsideByNameAndTheFilesTitleInTheScan) {
    for (const char* const file : {"AUDIO/00.MXF", "PROXY/0009ZZ.MP4", "ICON/0001AB.BMP"}) {
        m_card.AddFile(file);
    }
    for (const char* const inside : {"", "0009ZZ", "..\\x"}) {
        m_card.AddFile("CLIP/0001AB.XML", test::ClipXml({{"ClipName", inside}}));
        const ClipShow named = Named();
        EXPECT_EQ(named["ClipName"], inside);
        EXPECT_EQ(named["UserClipName"], inside);
        EXPECT_EQ(named["AudioPath"], *inside == '\0' ? "AUDIO\\00.MXF - - - - - - - " : "");
        EXPECT_EQ(named["ProxyPath"], *inside == '0' ? "PROXY\\0009ZZ.MP4" : "");
        EXPECT_EQ(named["XmlPath"], "");
        const ClipShow scanned = Scanned();
        EXPECT_EQ(scanned["ClipName"] + scanned["UserClipName"], "0001AB0001AB");
        EXPECT_EQ(scanned["VideoPath"], "VIDEO\\0001AB.MXF");
        EXPECT_EQ(scanned["IconPath"], "ICON\\0001AB.BMP");
        EXPECT_EQ(scanned["ProxyPath"], "");
    }
}

TEST_F(ClipReadersTest, ReadingByNameKeepsWhatItDoesNotRead) {
    m_card.AddClip("0001AB", {{kMemo, "10"}, {kMemo, "7"}, {kNewProxyAudio, ""}});
    _tag_P2Clip clip;
    clip.CodecClass = L"mine";
    clip.ActivePixel = clip.StartTimecode = clip.UnusedOffset = clip.DropFrame = 9;
    clip.AudioPath[3] = clip.AudioPath[4] = L"mine";
    clip.EssenceMask = 0xFFFF;
    clip.AvcIntraClass50 = 1;
    clip.Proxy.ProxyAudioMask = 8;
    clip.Memos.SetSize(1);
    clip.Memos[0].Offset = 7;
    clip.Memos[0].Text = L"mine";
    ASSERT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AB", clip), 0);
    EXPECT_EQ(clip.CodecClass, L"mine");
    EXPECT_EQ(clip.ActivePixel + clip.StartTimecode + clip.UnusedOffset + clip.DropFrame, 36);
    EXPECT_EQ(clip.AudioPath[3], L"") << "looked for and not found";
    EXPECT_EQ(clip.AudioPath[4], L"mine") << "beyond the four";
    EXPECT_EQ(clip.EssenceMask, 0U);
    EXPECT_EQ(clip.AvcIntraClass50, 0);
    EXPECT_EQ(clip.Proxy.ProxyAudioMask, 9U) << "bits are only set";
    ASSERT_EQ(clip.Memos.GetSize(), 2) << "appended, then freed of repetitions";
    EXPECT_EQ(clip.Memos[0].Text, L"mine");
    EXPECT_EQ(clip.Memos[1].Offset, 10);
}

TEST_F(ClipReadersTest, AClipThatDoesNotLoadLeavesOnlyItsPath) {
    m_card.AddFile("CLIP/0001AB.XML", "<P2Main><ClipContent><ClipName>x</ClipName>");
    for (const wchar_t* const name : {L"0001AB", L"0009ZZ"}) {
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), name, clip), 1);
        EXPECT_EQ(Below(clip.XmlPath), "CLIP\\" + platform::Utf8FromText(name) + ".XML");
        clip.XmlPath.Empty();
        EXPECT_TRUE(ClipShow(clip, m_card.Contents()).Fields().empty());
    }
}

TEST_F(ClipReadersTest, TheReaderOfAPathFindsTheContentsAboveIt) {
    m_card.AddClip("0001AB", {{kCodec, "AVC-LongG422"}, {kClass, "50"}, {kChannel, "1"}});
    m_card.AddFile("AVCLIP/0001AB.MXF");
    const CString path = m_card.Contents() + L"CLIP\\0001AB.XML";
    _tag_P2Clip clip;
    EXPECT_NE(NQP2ParserPeer::LoadClipFromXml(m_parser, path, clip), 0);
    clip.ShootStartTime = COleDateTime();
    EXPECT_EQ(ClipShow(clip, m_card.Contents()).Fields(), Scanned().Fields());
    EXPECT_EQ(Below(clip.AudioPath[0]), "AVCLIP\\0001AB.MXF");
    EXPECT_EQ(NQP2ParserPeer::LoadClipFromXml(m_parser, path + L"x", clip), 0);
    m_card.AddFile("CLIP/0001AB.XML", "");
    EXPECT_EQ(NQP2ParserPeer::LoadClipFromXml(m_parser, path, clip), 0);
}

} // namespace
} // namespace nqp2::clips
