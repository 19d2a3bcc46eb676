// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"
#include "platform/unicode.h"
#include "tests/clips/card_test.h"
#include "tests/clips/clip_show.h"
#include "tests/support/faulty_file_system.h"

#include <cstdlib>
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
constexpr const char* kType = "EssenceList/Video/TimecodeType";
constexpr const char* kPixel = "EssenceList/Video/ActivePixel";
constexpr const char* kLine = "EssenceList/Video/ActiveLine";
constexpr const char* kNewAudio = "EssenceList/+Audio";
constexpr const char* kChannel = "EssenceList/Audio/Channel";
constexpr const char* kId = "GlobalClipID";
constexpr const char* kEnd = "ClipMetadata/Shoot/EndDate";
constexpr const char* kProxyFormat = "ClipMetadata/Proxy/ProxyFormat";
constexpr const char* kNewProxyAudio = "ClipMetadata/Proxy/ProxyElementList/+ProxyAudio";
constexpr const char* kMemo = "ClipMetadata/MemoList/+Memo/Offset";

/// What a file holds and which files exist, and what a field of the record is told as: "" is the
/// value of a fresh record. More fields and values are separated by blanks and by "|".
struct Row {
    const char* fields;
    std::string named;   ///< by name
    std::string scanned; ///< by the scan
    ClipValues values = {};
    std::vector<const char*> files = {};
};

ClipValues Coded(const char* codec, const char* codecClass = "", ClipValues more = {}) {
    more.insert(more.begin(), {{kCodec, codec}, {kClass, codecClass}});
    return more;
}

ClipValues Timecode(const char* rate, const char* flag, const char* text) {
    return {{kRate, rate}, {kDropFlag, flag}, {kTimecode, text}};
}

std::vector<Row> Rows() {
    const std::string a = "AUDIO\\0001AB";
    const std::string four = a + "00.MXF " + a + "01.MXF " + a + "02.MXF " + a + "03.MXF ";
    const std::string eight = four + a + "04.MXF " + a + "05.MXF " + a + "06.MXF " + a + "07.MXF ";
    const std::string video = "VIDEO\\0001AB.MXF";
    const std::string av = "AVCLIP\\0001AB.MXF";
    const std::string both = av + " " + av + " - - - - - - ";
    const std::vector<const char*> five = {"AUDIO/0001AB00.MXF", "AUDIO/0001AB01.MXF",
                                           "AUDIO/0001AB02.MXF", "AUDIO/0001AB03.MXF",
                                           "AUDIO/0001AB04.MXF"};
    const std::vector<const char*> second = {"VIDEO/0001AB.MXF", "AUDIO/0001AB01.MXF"};
    const std::vector<const char*> family = {"AVCLIP/0001AB.MXF"};
    const ClipValues otherClass = {{"EssenceList/Video/Codec@xmlns:p", "urn:p"},
                                   {"EssenceList/Video/Codec@p:Class", "1"},
                                   {kClass, "2"}};
    const std::string longDate = "2005-02-01T08:58:44.5+08:00";
    return {
        {"AvcIntraClass50", "1", "1", Coded("AVC-I_1080/50i", "50")}, // the one that both know
        {"AvcIntraClass50", "", "1", Coded("AVC-I_1080/25p", "50")},
        {"AvcIntraClass50", "", "1", Coded("AVC-I_720/59.94p", "50")},
        {"AvcIntraClass50", "", "", Coded("avc-i_1080/50i", "50")},
        {"AvcIntraClass50 CodecClass", "|", "|50", Coded("DV50_422", "50")},
        {"CodecClass", "", "1", otherClass}, // the first of that local name
        {"CodecName", "avc-longg420", "avc-longg420-25M", Coded("avc-longg420", "25")},
        {"CodecName", "AVC-LongG422", "AVC-LongG422-M", Coded("AVC-LongG422")},

        {"ActivePixel", "", "1280", Coded("AVC-LongG420", "", {{kLine, "720"}})},
        {"ActivePixel", "", "960", Coded("AVC-Intra4K_444", "", {{kPixel, "960"}})},
        {"ActivePixel", "", "1920", Coded("avc-intra4k_422", "", {{kPixel, "wide"}})},
        {"ActivePixel", "", "", Coded("AVC-I_1080/50i", "", {{kPixel, "720"}})}, // no family

        {"DropFrame", "", "0", {{kRate, "59.94i"}, {kDropFlag, "false"}}},
        {"DropFrame", "", "", {{kRate, "50i"}, {kDropFlag, "False"}}},
        {"DropFrame", "", "0", Coded("AVC-LongG422", "", {{kType, "NonDrop"}})},
        {"DropFrame", "", "", Coded("AVC-Intra_422", "", {{kType, "nondrop"}, {kDropFlag, "0"}})},
        {"StartTimecode", "", "107892", Timecode("59.94i", "true", "01:00:00:00")},
        {"StartTimecode", "", "108000", Timecode("59.94i", "0", "01:00:00:00")},
        {"UnusedOffset", "", "42", {{"EssenceList/UnusedOffset", "42"}}},

        {"VideoPath", "", video}, // the scan takes it for granted
        {"VideoPath", video, video, {}, {"Video/0001ab.mxf"}},
        {"VideoPath", video, "", Coded("AVC-Intra_422"), {"VIDEO/0001AB.MXF"}},
        {"EssenceMask AudioPath", "|", "7|" + a + "00.MXF " + a + "01.MXF - - - - - - ",
         ClipValues(3, {kNewAudio, ""})}, // one path less than described
        {"EssenceMask", "5", "3", ClipValues(2, {kNewAudio, ""}), second},
        {"EssenceMask AudioPath", "30|" + four + "- - - - ", "1|", {}, five},
        {"EssenceMask AudioPath", "|", "511|" + eight, ClipValues(100, {kNewAudio, ""})},
        {"EssenceMask", "", "", Coded("AVC-LongG422", "", {{kChannel, "4"}})},
        {"EssenceMask", "", "511", Coded("AVC-Intra_422", "", {{kChannel, "2147483647"}}), family},
        {"EssenceMask", "", "1", Coded("AVC-Intra_422", "", {{kChannel, "-2147483648"}}), family},
        {"AudioPath", "", both, Coded("AVC-Intra_422", "", {{kChannel, "2"}}), family},

        {"UserClipName", "0001AB", "0001AB", {{"ClipMetadata/UserClipName", ""}}},
        {"UserClipName ClipName XmlPath ProxyPath",
         "0009ZZ|0009ZZ||PROXY\\0009ZZ.MP4", // after the name inside
         "0001AB|0001AB|CLIP\\0001AB.XML|",  // after the file's own
         {{"ClipName", "0009ZZ"}},
         {"PROXY/0009ZZ.MP4"}},
        {"GlobalClipGuid ClipIdDigit", "|0", "|0", {{kId, "no identifier"}}},
        {"Duration", "12", "12", {{"Duration", "\t12 frames"}}},
        {"ProxyAudioMask", "18446744073709551615", "18446744073709551615",
         ClipValues(70, {kNewProxyAudio, ""})},
        {"ProxyFilePath ProxyPath",
         "|PROXY\\0001AB.MP4",
         "|PROXY\\0001AB.MP4",
         {{kProxyFormat, "MOV"}},
         {"PROXY/0001AB.MP4"}}, // the other format's file
        {"ShootStartTime StartDate",
         "|2005-02-01T08:58:44.5",
         "|2005-02-01T08:58:44.5",
         {{kStart, longDate}}},
        {"ShootStartTime", "invalid", "invalid", {{kStart, "2005-13-01T08:58:44+08:00"}}},
    };
}

class ClipReadersTest : public CardTest {
protected:
    ClipShow Named() {
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AB", clip), 0);
        return {clip, m_card.Contents()};
    }
    ClipShow Scanned() {
        const CArray<_tag_P2Clip> clips = Scan();
        EXPECT_EQ(clips.GetSize(), 1);
        return {clips.IsEmpty() ? _tag_P2Clip() : clips[0], m_card.Contents()};
    }
};

TEST_F(ClipReadersTest, TellOrLeaveOutTheseFields) {
    for (const Row& row : Rows()) {
        SCOPED_TRACE(std::string(row.fields) + ": " + row.named + " / " + row.scanned);
        std::filesystem::remove_all(m_card.Folder().Path("CONTENTS"));
        m_card.AddClip("0001AB", row.values);
        for (const char* const file : row.files) {
            m_card.AddFile(file);
        }
        EXPECT_EQ(Named().Joined(row.fields), row.named) << "by name";
        EXPECT_EQ(Scanned().Joined(row.fields), row.scanned) << "by the scan";
    }
}

/// A value of a clip file and the field that shows it: by default that of the element's name, and
/// the value as it is.
struct FullRow {
    std::string path;
    std::string value;
    std::string field = path.substr(path.rfind('/') + 1);
    std::string shown = value;
};

/// Values of every field that both read in the same way.
std::vector<FullRow> FullRows() {
    const std::string audio = "EssenceList/Audio/";
    const std::string video = "EssenceList/Video/";
    const std::string proxyAudio = "ClipMetadata/Proxy/ProxyElementList/ProxyAudio/";
    const std::string proxyVideo = "ClipMetadata/Proxy/ProxyElementList/ProxyVideo/";
    const std::string memo = "ClipMetadata/MemoList/Memo/";
    const std::string zeros = "00000000-0000-0000-0000-00000000000";
    std::vector<FullRow> rows = {
        {"ClipName", "0001AB"},
        {kId, "060A2B340101010501010D431300000700112233445566778899AABBCCDDEEFF"},
        {"Duration", "250"},
        {kCodec, "DV50_422", "CodecName"},
        {kRate, "50i"},
        {video + "AspectRatio", "16:9"},
        {video + "VideoIndex/StartByteOffset", "32768", "VideoStartByteOffset"},
        {video + "VideoIndex/DataSize", "5000000000", "VideoDataSize"},
        {audio + "BitsPerSample", "16", "AudioBitsPerSample"},
        {audio + "AudioIndex/StartByteOffset", "-1", "AudioStartByteOffset"},
        {audio + "AudioIndex/DataSize", " 99999999999999999999", "AudioDataSize",
         "9223372036854775807"},
        {"Relation/OffsetInShot", "6000000000"},
        {"Relation/GlobalShotID", "05", "GlobalShotGuid", zeros + "5"},
        {"ClipMetadata/UserClipName", "Straßenbahn & <Co>"},
        {kStart, "2005-02-01T06:00:00+08:00", "StartDate", "2005-02-01T06:00:00"},
        {kEnd, "2005-02-01T08:59:00-05:00", "EndDate", "2005-02-01T08:59:00"},
        {memo + "Offset", "10", "Memos", "10,Jo,first,AIFF,48000,24,1|20,,,,0,0,1|30,,,,0,0,1"},
        {memo + "Person", "Jo", ""},
        {memo + "Text", "first", ""},
        {memo + "VoiceFormat", "AIFF", ""},
        {memo + "VoiceSamplingRate", "48000", ""},
        {memo + "VoiceBitsPerSample", "24", ""},
        {kProxyFormat, "mov", "ProxyFormat", "2"},
        {proxyVideo + "ProxyVideoBitRate", "1500"},
        {proxyVideo + "ProxyVideoCodec", "MPEG-4", "ProxyVideoCodec", "2"},
        {proxyVideo + "ProxyFrameRate", "25p"},
        {proxyVideo + "ProxyResolution", "SIF_PAL", "ProxyResolution", "2"},
        {proxyVideo + "AspectRatio", "4:3", "ProxyAspectRatio"},
        {proxyAudio + "ProxyAudioCodec", "LPCM", "ProxyAudioCodec", "2"},
        {proxyAudio + "ProxyAudioBitRate", "64"},
        {proxyAudio + "ProxySamplingRate", "24000"},
        {kNewProxyAudio, "", "ProxyAudioChannels", "2"},
        {kNewProxyAudio, "", "ProxyAudioMask", "7"},
    };
    for (const char* const offset : {"20", "10", "30", "20"}) {
        rows.push_back({kMemo, offset, ""}); // one remains for each offset
    }
    for (const std::string which : {"Top", "Next", "Previous"}) {
        const std::string path = "Relation/Connection/" + which;
        const std::string digit(1, static_cast<char>('0' + which.size())); // another for each
        rows.push_back({path + "/GlobalClipID", "0" + digit, which + "ClipGuid", zeros + digit});
        rows.push_back({path + "/ClipName", "C" + digit, which + "ClipName"});
        rows.push_back({path + "/P2SerialNo.", "S" + digit, which + "SerialNo"});
    }
    return rows;
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
        expected[row.field] = row.shown;
    }
    expected.erase(""); // what no field shows alone
    for (const char* const file :
         {"VIDEO/0001AB.MXF", "ICON/0001AB.BMP", "PROXY/0001AB.MOV", "PROXY/0001AB.MP4"}) {
        m_card.AddFile(file);
    }
    full.push_back({"ClipMetadata@xmlns", "urn:z"}); // a second one may start deeper down
    for (const char* const root : {test::kClipNamespace, "", R"(xmlns="urn:x" xmlns:p="urn:y")"}) {
        m_card.AddFile("CLIP/0001AB.XML", test::ClipXml(full, root));
        expected.erase("ProxyVideoCodecName");
        EXPECT_EQ(Scanned().Fields(), expected) << root;
        expected["ProxyVideoCodecName"] = "MPEG-4";
        EXPECT_EQ(Named().Fields(), expected) << root;
    }
}

TEST_F(ClipReadersTest, ReadingByNameKeepsWhatItDoesNotRead) {
    m_card.AddClip("0001AB", {{kMemo, "10"}, {kMemo, "7"}, {kNewProxyAudio, ""}});
    _tag_P2Clip clip;
    clip.CodecClass = clip.AudioPath[3] = clip.AudioPath[4] = L"mine";
    clip.ActivePixel = clip.StartTimecode = clip.UnusedOffset = clip.DropFrame = 9;
    clip.EssenceMask = 0xFFFF;
    clip.AvcIntraClass50 = 1;
    clip.Proxy.ProxyAudioMask = 8;
    clip.Memos.SetSize(1);
    clip.Memos[0].Offset = 7;
    clip.Memos[0].Text = L"mine";
    ASSERT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0001AB", clip), 0);
    const ClipShow shown(clip, m_card.Contents());
    EXPECT_EQ(shown.Joined("CodecClass ActivePixel StartTimecode UnusedOffset DropFrame"),
              "mine|9|9|9|9");
    EXPECT_EQ(shown["AudioPath"], "- - - - mine - - - ") << "four are looked for";
    EXPECT_EQ(shown.Joined("EssenceMask AvcIntraClass50"), "|");
    EXPECT_EQ(shown["ProxyAudioMask"], "9") << "bits are only set";
    EXPECT_EQ(shown["Memos"], "7,,mine,WAV,1200,16,1|10,,,,0,0,1")
        << "appended, one for each offset";
    _tag_P2Clip failed;
    EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), L"0009ZZ", failed), 1);
    EXPECT_EQ(ClipShow(failed, m_card.Contents()).Fields(),
              (ClipShow::Shown{{"XmlPath", "CLIP\\0009ZZ.XML"}}));
}

TEST_F(ClipReadersTest, ACardThatIsReadClipByClipHasEachFolderListedOnce) {
    constexpr std::uint64_t kFolders = 7; // the card, what it holds, and five with files
    constexpr int kClips = 1000;
    const test::TempFolder& folder = m_card.Folder();
    std::filesystem::remove_all(folder.Path("CONTENTS"));
    const char* const files[][2] = {
        {"video/", ".mxf"}, {"audio/", "00.mxf"}, {"icon/", ".bmp"}, {"proxy/", ".mp4"}};
    for (int i = 0; i < kClips; ++i) {
        const std::string name = std::to_string(i);
        folder.Write("contents/clip/" + name + ".xml", test::ClipXml({{"ClipName", name}}));
        folder.Write("contents/" + (files[i % 4][0] + name) + files[i % 4][1]);
    }
    test::FaultyFileSystem counted;
    counted.SetFacts([](platform::FileInfo& info) { // as it is later
        info.modified -= 3600;
        info.changed -= 3600;
    });
    const platform::ScopedFileSystem inPlace(counted);
    const auto paths = [&](int i) {
        CString name;
        name.Format(L"%d", i);
        _tag_P2Clip clip;
        EXPECT_EQ(m_parser.LoadClipInfo(m_card.Root(), name, clip), 0);
        return ClipShow(clip, m_card.Contents())
            .Joined("VideoPath AudioPath IconPath ProxyPath XmlPath EssenceMask");
    };
    std::vector<std::string> found;
    for (int i = 0; i < kClips; ++i) {
        found.push_back(paths(i));
    }
    CString free;
    EXPECT_EQ(m_parser.CheckName(free, m_card.Root()), 1);
    EXPECT_EQ(counted.Calls(test::Operation::List), kFolders);
    folder.Write("contents/video/0001aa.mxf");
    EXPECT_EQ(m_parser.CheckName(free, m_card.Root()), 1);
    EXPECT_EQ(free, L"0001AB");
    EXPECT_EQ(counted.Calls(test::Operation::List), kFolders + 1) << "for the folder that changed";
    for (int i = 0; i < kClips; i += 97) {
        m_parser.Release();
        m_parser.Init();
        EXPECT_EQ(found.at(static_cast<std::size_t>(i)), paths(i)) << "as nothing else tells";
    }
}

/// Real and independently written metadata that lies beside the sources, not in them.
TEST_F(ClipReadersTest, ReadCardsOfOtherWriters) {
    const char* const place = std::getenv("NQP2_SHARED_SAMPLES");
    const std::filesystem::path samples = place != nullptr ? place : NQP2_DEFAULT_SHARED_SAMPLES;
    if (!std::filesystem::is_directory(samples / "p2")) {
        GTEST_SKIP() << "no samples at " << samples << "; set NQP2_SHARED_SAMPLES";
    }
    constexpr const char* kFields =
        "GlobalClipGuid CodecName FrameRate VideoDataSize AudioDataSize IconPath StartTimecode";
    const std::string shown =
        "798ae7c6-a09e-4b6f-a5a1-1f6e2d08e5c0|DV25_420|50i|1440000|38400|ICON\\0001YQ.BMP|";
    const CString root = InterfaceRoot((samples / "p2" / "card-dv25pal").string());
    CArray<_tag_P2Clip> clips;
    _tag_P2Clip named;
    EXPECT_EQ(m_parser.LoadClipEx(root, clips, 1, m_report), 0);
    EXPECT_EQ(m_parser.LoadClipInfo(root, L"0001YQ", named), 0);
    ASSERT_EQ(clips.GetSize(), 1);
    EXPECT_EQ(ClipShow(named, root + L"\\CONTENTS\\").Joined(kFields), shown);
    EXPECT_EQ(ClipShow(clips[0], root + L"\\CONTENTS\\").Joined(kFields), shown + "900000");
}

TEST_F(ClipReadersTest, TheReaderOfAPathFindsTheContentsAboveIt) {
    m_card.AddClip("0001AB", {{kCodec, "AVC-LongG422"}, {kClass, "50"}, {kChannel, "1"}});
    m_card.AddFile("AVCLIP/0001AB.MXF");
    const CString path = m_card.Contents() + L"CLIP\\0001AB.XML";
    _tag_P2Clip clip;
    EXPECT_NE(NQP2ParserPeer::LoadClipFromXml(m_parser, path, clip), 0);
    clip.ShootStartTime = COleDateTime();
    EXPECT_EQ(ClipShow(clip, m_card.Contents()).Fields(), Scanned().Fields());
    EXPECT_EQ(NQP2ParserPeer::LoadClipFromXml(m_parser, path + L"x", clip), 0);
    m_card.AddFile("CLIP/0001AB.XML", "");
    EXPECT_EQ(NQP2ParserPeer::LoadClipFromXml(m_parser, path, clip), 0);
}

} // namespace
} // namespace nqp2::clips
