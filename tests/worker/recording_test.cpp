// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording.h"

#include "NQP2ParserU/NQP2Parser.h"
#include "tests/support/print_text.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/media_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace nqp2::worker {
namespace {

using platform::IoError;
using test::Operation;
using testing::HasSubstr;

WAVEFORMATEX Wave(std::uint16_t channels, std::uint16_t bits) {
    WAVEFORMATEX wave;
    wave.wFormatTag = 1;
    wave.nChannels = channels;
    wave.nSamplesPerSec = 48000;
    wave.wBitsPerSample = bits;
    return wave;
}

class RecordingTest : public testing::Test {
protected:
    RecordingParameters Parameters(eCodeType type = CT_DV25_50I) {
        RecordingParameters parameters;
        parameters.codeType = type;
        parameters.wave = Wave(2, 16);
        parameters.cardRoot = m_card.Root();
        parameters.clipName = L"0007AB";
        return parameters;
    }
    /// The sentence of the first failure.
    static std::string Start(const RecordingParameters& parameters,
                             std::unique_ptr<Recording>& recording, std::uint32_t frames = 0) {
        return ErrorOf(
            [&] { recording = std::make_unique<Recording>(parameters, frames, VS_50I); });
    }
    static std::string Add(Recording& recording, const std::string& video,
                           const std::string& sound = {}) {
        return ErrorOf([&] { recording.Add(video, sound); });
    }
    static std::string Record(const RecordingParameters& parameters,
                              const std::vector<std::string>& units,
                              const std::string& sound = {}) {
        return ErrorOf([&] {
            Recording recording(parameters, 0, VS_50I);
            for (std::size_t i = 0; i < units.size(); ++i) {
                recording.Add(units[i], i == 0 ? sound : "");
            }
            recording.Finish();
        });
    }
    std::map<std::string, std::string> OnCard() { return FilesBelow(m_card.Folder().Path()); }
    void EmptyCard() {
        for (const char* const folder : {"CLIP", "VIDEO", "AUDIO"}) {
            std::filesystem::remove_all(m_card.Folder().Path(std::string("CONTENTS/") + folder));
        }
        m_card.Folder().MakeFolder("CONTENTS/CLIP");
    }
    CArray<_tag_P2Clip> ScanAll() {
        CNQP2Parser parser;
        parser.Init();
        CArray<_tag_P2Clip> clips;
        EXPECT_EQ(parser.LoadClipEx(m_card.Root(), clips, 1), 0);
        parser.Release();
        std::sort(clips.begin(), clips.end(),
                  [](const auto& a, const auto& b) { return a.ClipName.Compare(b.ClipName) < 0; });
        return clips;
    }
    /// 3, 3 and 2 frames that make up one shot.
    void ExpectThreeClips(const std::string& video, const std::string& sound) {
        const CArray<_tag_P2Clip> clips = ScanAll();
        ASSERT_EQ(clips.GetSize(), 3);
        std::string allVideo;
        std::string allSound;
        for (int i = 0; i < 3; ++i) {
            const _tag_P2Clip& clip = clips[i];
            const std::string name = "000" + std::to_string(7 + i) + "AB";
            int packets = 0;
            std::int64_t position = 0;
            allVideo += ReadEssence(m_card.Folder().Path("CONTENTS/VIDEO/" + name + ".MXF"),
                                    packets, position);
            allSound += ReadEssence(m_card.Folder().Path("CONTENTS/AUDIO/" + name + "00.MXF"),
                                    packets, position);
            EXPECT_EQ(clip.ClipName, Name(name.c_str()));
            EXPECT_EQ(clip.Duration, i < 2 ? 3 : 2);
            EXPECT_EQ(clip.OffsetInShot, 3 * i);
            EXPECT_EQ(clip.StartTimecode, 100 + 3 * i);
            EXPECT_EQ(clip.TopClipGuid, i > 0 ? clips[0].GlobalClipGuid : GUID());
            EXPECT_EQ(clip.PreviousClipGuid, i > 0 ? clips[i - 1].GlobalClipGuid : GUID());
            EXPECT_EQ(clip.NextClipGuid, i < 2 ? clips[i + 1].GlobalClipGuid : GUID());
            EXPECT_EQ(clip.NextClipName, i < 2 ? clips[i + 1].ClipName : CString());
        }
        EXPECT_TRUE(allVideo == video);
        EXPECT_TRUE(allSound == sound);
    }
    _tag_P2Clip Scan(eCodeType& type) {
        const CArray<_tag_P2Clip> clips = ScanAll();
        EXPECT_EQ(clips.GetSize(), 1);
        const _tag_P2Clip clip = clips.IsEmpty() ? _tag_P2Clip() : clips[0];
        type = CodeTypeFromCodec(clip.CodecName, clip.FrameRate, clip.AvcIntraClass50,
                                 clip.CodecClass);
        return clip;
    }

    test::CardBuilder m_card;
};

std::string Joined(const std::vector<std::string>& units) {
    std::string all;
    for (const std::string& unit : units) {
        all += unit;
    }
    return all;
}

struct FormatCase {
    eCodeType type;
    TestEncoding encoding;
    const char* rate;
};

TEST_F(RecordingTest, EssenceAndMetadataAreReadBackAsTheyWere) {
    const FormatCase cases[] = {
        {CT_DV25_50I, kDv25Pal, "50i"},
        {CT_DV25_5994I, kDv25Ntsc, "59.94i"},
        {CT_DV50_50I, kDv50Pal, "50i"},
        {CT_DV50_2997P, {"dvvideo", 720, 480, {30000, 1001}, AV_PIX_FMT_YUV422P}, "29.97p"},
        {CT_DV100_1080_50I, {"dvvideo", 1440, 1080, {25, 1}, AV_PIX_FMT_YUV422P}, "50i"},
        {CT_DV100_720_50P, {"dvvideo", 960, 720, {50, 1}, AV_PIX_FMT_YUV422P}, "50p"},
        {CT_AVCI100_1080_50I,
         {"libx264", 1920, 1080, {25, 1}, AV_PIX_FMT_YUV422P10, "avcintra-class=100:flags=+ildct"},
         "50i"},
        {CT_AVCI50_720_50P,
         {"libx264", 960, 720, {50, 1}, AV_PIX_FMT_YUV420P10, "avcintra-class=50"},
         "50p"},
    };
    for (const FormatCase& each : cases) {
        SCOPED_TRACE(CodeTypeName(each.type));
        const std::vector<std::string> units = EncodePictures(each.encoding, 4);
        if (units.empty()) {
            std::cout << "no encoder " << each.encoding.encoder << ": left out\n";
            continue;
        }
        const std::string name = "0007AB";
        ASSERT_EQ(Record(Parameters(each.type), units), "");
        eCodeType type = CT_DV25_50I;
        const _tag_P2Clip clip = Scan(type);
        EXPECT_EQ(type, each.type);
        EXPECT_EQ(clip.FrameRate, Name(each.rate));
        EXPECT_EQ(clip.Duration, 4);
        const std::string video = m_card.Folder().Path("CONTENTS/VIDEO/0007AB.MXF");
        int packets = 0;
        std::int64_t position = 0;
        EXPECT_EQ(ReadEssence(video, packets, position), Joined(units));
        EXPECT_EQ(packets, 4);
        EXPECT_EQ(clip.VideoStartByteOffset, position);
        EXPECT_EQ(clip.VideoDataSize, static_cast<std::int64_t>(Joined(units).size()));
        const MediaFacts facts = ReadMediaFile(video, [] { return true; });
        EXPECT_EQ(facts.width, each.encoding.width);
        EXPECT_EQ(facts.height, each.encoding.height);
        EXPECT_EQ(av_cmp_q({facts.rate.frames, facts.rate.seconds}, each.encoding.rate), 0);
        EmptyCard();
    }
}

TEST_F(RecordingTest, SoundIsTakenApartAndFilledUpToTheVideosEnd) {
    for (const std::uint16_t bits : {std::uint16_t{16}, std::uint16_t{24}}) {
        const std::size_t width = bits / 8U;
        std::string interleaved;
        std::string channels[2];
        for (std::size_t i = 0; i < 2500; ++i) { // one frame and a bit, in two pieces
            for (std::size_t channel = 0; channel < 2; ++channel) {
                const std::string sample(width, static_cast<char>(i * 3 + channel + 1));
                interleaved += sample;
                channels[channel] += sample;
            }
        }
        RecordingParameters parameters = Parameters();
        parameters.wave = Wave(2, bits);
        parameters.clipName = bits == 16 ? L"0016AB" : L"0024AB";
        ASSERT_EQ(Record(parameters, EncodePictures(kDv25Pal, 3), interleaved), "");
        for (std::size_t channel = 0; channel < 2; ++channel) {
            channels[channel].resize(std::size_t{1920} * 3 * width);
            int packets = 0;
            std::int64_t position = 0;
            const std::string file = "CONTENTS/AUDIO/00" + std::to_string(bits) + "AB0" +
                                     std::to_string(channel) + ".MXF";
            EXPECT_EQ(ReadEssence(m_card.Folder().Path(file), packets, position),
                      channels[channel]);
        }
    }
}

TEST_F(RecordingTest, MetadataCarryWhatTheHostSaid) {
    RecordingParameters parameters = Parameters(CT_DV25_5994I);
    parameters.userClipName = L"A <walk> & more";
    parameters.startTimecode = 17982; // ten minutes of drop-frame
    parameters.dropFrame = true;
    parameters.isWide = true;
    const RelatedClip previous = {
        L"0006AB", {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}}, L"AAB10E1234"};
    parameters.relations.previous = previous;
    ASSERT_EQ(Record(parameters, EncodePictures(kDv25Ntsc, 2)), "");
    eCodeType type = CT_DV25_50I;
    const _tag_P2Clip clip = Scan(type);
    EXPECT_EQ(clip.UserClipName, L"A <walk> & more");
    EXPECT_EQ(clip.StartTimecode, 17982);
    EXPECT_EQ(clip.DropFrame, 1);
    EXPECT_EQ(clip.AspectRatio, L"16:9");
    EXPECT_EQ(clip.PreviousClipName, L"0006AB");
    EXPECT_EQ(clip.PreviousSerialNo, L"AAB10E1234");
    EXPECT_EQ(clip.PreviousClipGuid, previous.identifier);
    EXPECT_TRUE(clip.NextClipName.IsEmpty());
    EXPECT_NE(clip.GlobalClipGuid, GUID());
    const MediaFacts facts =
        ReadMediaFile(m_card.Folder().Path("CONTENTS/VIDEO/0007AB.MXF"), [] { return true; });
    EXPECT_EQ(facts.timecode, "00:10:00;00");
}

TEST(StartTimecode, CountsAsTheRateDoes) {
    struct Case {
        eCodeType type;
        std::uint32_t frames;
        bool dropFrame;
        const wchar_t* text;
    };
    const Case cases[] = {
        {CT_DV25_50I, 900000, false, L"10:00:00:00"},
        {CT_DV25_5994I, 1800, true, L"00:01:00:02"},
        {CT_DV25_5994I, 1799, true, L"00:00:59:29"},
        {CT_DV25_5994I, 1800, false, L"00:01:00:00"},
        {CT_DV25_5994I, 17981, true, L"00:09:59:29"},
        {CT_DV100_720_5994P, 3600, true, L"00:01:00:04"},
        {CT_DV25_50I, 2160001, false, L"00:00:00:01"},
        {CT_DV25_50I, 0xFFFFFFFF, false, L"09:51:31:20"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(StartTimecodeText(*FindRecordingFormat(each.type), each.frames, each.dropFrame),
                  each.text)
            << each.frames;
    }
}

TEST_F(RecordingTest, RefusesWhatItCannotRecord) {
    struct Case {
        const char* what;
        void (*spoil)(RecordingParameters&);
    };
    const Case cases[] = {
        {"long-GOP", [](RecordingParameters& p) { p.codeType = CT_AVCHD_1920_1080_50I; }},
        {"no code type", [](RecordingParameters& p) { p.codeType = static_cast<eCodeType>(9); }},
        {"compressed sound", [](RecordingParameters& p) { p.wave.wFormatTag = 0x55; }},
        {"8 bits", [](RecordingParameters& p) { p.wave.wBitsPerSample = 8; }},
        {"44.1 kHz", [](RecordingParameters& p) { p.wave.nSamplesPerSec = 44100; }},
        {"17 channels", [](RecordingParameters& p) { p.wave.nChannels = 17; }},
        {"drop-frame at 25", [](RecordingParameters& p) { p.dropFrame = true; }},
        {"no card", [](RecordingParameters& p) { p.cardRoot = L"/no/such/card"; }},
        {"a name upward", [](RecordingParameters& p) { p.clipName = L"../x"; }},
        {"a name that FAT has not", [](RecordingParameters& p) { p.clipName = L"what?"; }},
        {"a name too long", [](RecordingParameters& p) { p.clipName = CString(L'\x20AC', 100); }},
        {"a title XML has not", [](RecordingParameters& p) { p.userClipName = L"a\x1b[0m"; }},
        {"a relation XML has not",
         [](RecordingParameters& p) {
             p.relations.next = RelatedClip{L"\xFFFF", {}, {}};
         }},
    };
    for (const Case& each : cases) {
        RecordingParameters parameters = Parameters();
        each.spoil(parameters);
        std::unique_ptr<Recording> recording;
        EXPECT_NE(Start(parameters, recording), "") << each.what;
    }
    EXPECT_TRUE(OnCard().empty());
}

TEST_F(RecordingTest, WrongDataIsRefusedAndTheRecordingGoesOn) {
    std::unique_ptr<Recording> recording;
    RecordingParameters unnamed = Parameters();
    unnamed.clipName = L"";
    ASSERT_EQ(Start(unnamed, recording), "");
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    const std::string wrong[] = {"x", units[0].substr(1), units[0] + "x",
                                 std::string(144000, '\xFF'), EncodePictures(kDv50Pal, 1)[0]};
    for (const std::string& unit : wrong) {
        EXPECT_NE(Add(*recording, unit), "");
    }
    EXPECT_NE(Add(*recording, "", "abc"), "") << "no whole sample";
    EXPECT_EQ(Add(*recording, units[0]), "");
    EXPECT_EQ(Add(*recording, units[1]), "");
    EXPECT_EQ(ErrorOf([&] { recording->Finish(); }), "");
    EXPECT_TRUE(OnCard().contains("CONTENTS/CLIP/0001AA.XML"));
    const RecordingParameters avc = Parameters(CT_AVCI100_1080_50I);
    ASSERT_EQ(Start(avc, recording), "");
    EXPECT_NE(Add(*recording, units[0]), "");
    EXPECT_THAT(Add(*recording, std::string("\0\0\0\1\x09\x10\0\0\0\1\x65", 11)),
                HasSubstr("no parameter sets"));
    EXPECT_THAT(ErrorOf([&] { recording->Finish(); }), HasSubstr("No frame"));
}

TEST_F(RecordingTest, AStreamOfAnotherFormatIsRefusedAtItsFirstFrame) {
    constexpr AVPixelFormat k422 = AV_PIX_FMT_YUV422P;
    constexpr AVPixelFormat kDeep422 = AV_PIX_FMT_YUV422P10;
    const TestEncoding dv100 = {"dvvideo", 1440, 1080, {25, 1}, k422};
    const TestEncoding avc100 = {"libx264", 1920,     1080,
                                 {25, 1},   kDeep422, "avcintra-class=100:flags=+ildct"};
    const TestEncoding avc100p = {"libx264", 1920, 1080, {25, 1}, kDeep422, "avcintra-class=100"};
    const TestEncoding avc50p = {"libx264", 1920, 1080, {50, 1}, kDeep422, "avcintra-class=100"};
    const TestEncoding avc200 = {"libx264", 1920,     1080,
                                 {25, 1},   kDeep422, "avcintra-class=200:flags=+ildct"};
    const TestEncoding avc50 = {
        "libx264", 1440, 1080, {25, 1}, AV_PIX_FMT_YUV420P10, "avcintra-class=50:flags=+ildct"};
    struct Case {
        eCodeType type;
        TestEncoding encoding;
        std::size_t together; ///< units
        bool fits;
    };
    const Case cases[] = {
        {CT_DV50_50I, kDv25Pal, 2, false},         {CT_DV25_5994I, kDv25Pal, 1, false},
        {CT_DV100_1080_50I, kDv50Pal, 2, false},   {CT_DV100_720_50P, kDv50Pal, 1, false},
        {CT_DV50_50I, kDv50Pal, 1, true},          {CT_DV100_1080_25P, dv100, 1, true},
        {CT_AVCI100_1080_50I, avc100, 1, true},    {CT_AVCI100_1080_50I, avc100p, 1, false},
        {CT_AVCI200_1080_50I, avc100, 1, false},   {CT_AVCI50_1080_50I, avc100, 1, false},
        {CT_AVCI100_1080_5994I, avc100, 1, false}, {CT_AVCI100_720_50P, avc100, 1, false},
        {CT_AVCI200_1080_50I, avc200, 1, true},    {CT_AVCI100_1080_50I, avc200, 1, false},
        {CT_AVCI50_1080_50I, avc50, 1, true},      {CT_AVCI100_1080_50I, avc50, 1, false},
        {CT_AVCI100_1080_25P, avc100p, 1, true},   {CT_AVCI200_1080_50P, avc50p, 1, true},
    };
    for (const Case& each : cases) {
        const std::string unit =
            Joined(EncodePictures(each.encoding, static_cast<int>(each.together)));
        if (unit.empty()) {
            std::cout << "no encoder " << each.encoding.encoder << ": left out\n";
            continue;
        }
        const std::string error =
            ErrorOf([&] { CheckAccessUnit(*FindRecordingFormat(each.type), unit, true); });
        EXPECT_EQ(error.empty(), each.fits)
            << CodeTypeName(each.type) << " from " << each.encoding.options << " of " << unit.size()
            << ": " << error;
    }
}

TEST_F(RecordingTest, GoesOnInLinkedClipsWhereAFileIsFull) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 8);
    std::string sound;
    for (std::size_t i = 0; i < units.size() * 1920; ++i) {
        sound += std::string(2, static_cast<char>(i * 31 + i / 1920));
    }
    RecordingParameters parameters = Parameters();
    parameters.wave = Wave(1, 16);
    parameters.startTimecode = 100;
    parameters.mostFileBytes = (std::uint64_t{9} << 17U) + 3 * 144000 + 100'000; // three frames
    // Sound in step with the frames, a frame behind them, and a clip ahead.
    for (const int lag : {0, 1, -3}) {
        SCOPED_TRACE(lag);
        std::unique_ptr<Recording> recording;
        ASSERT_EQ(Start(parameters, recording), "");
        const auto part = [](const auto& parts, std::size_t size, int number) {
            return number < 0 ? std::string()
                              : parts.substr(static_cast<std::size_t>(number) * size, size);
        };
        for (int i = std::min(lag, 0); i < 9; ++i) {
            ASSERT_EQ(Add(*recording, i < 8 ? part(Joined(units), 144000, i) : "",
                          i - lag < 8 ? part(sound, 3840, i - lag) : ""),
                      "");
        }
        ASSERT_EQ(ErrorOf([&] { recording->Finish(); }), "");
        ExpectThreeClips(Joined(units), sound);
        EmptyCard();
    }
}

TEST_F(RecordingTest, ANameIsClaimedAtTheStart) {
    RecordingParameters unnamed = Parameters();
    unnamed.clipName = L"";
    // Another process is as good as another open folder.
    const CardFolders other = OpenCard(m_card.Root());
    std::unique_ptr<platform::NameLock> lock;
    ASSERT_TRUE(other.root->LockName("0002aa", lock));
    std::unique_ptr<Recording> recordings[2];
    for (std::unique_ptr<Recording>& recording : recordings) {
        ASSERT_EQ(Start(unnamed, recording), "");
    }
    std::unique_ptr<Recording> refused;
    RecordingParameters named = Parameters();
    for (const wchar_t* const name : {L"0001AA", L"0002AA", L"0003AA"}) {
        named.clipName = name;
        EXPECT_THAT(Start(named, refused), HasSubstr("already"));
    }
    for (std::unique_ptr<Recording>& recording : recordings) {
        EXPECT_EQ(Add(*recording, EncodePictures(kDv25Pal, 1)[0]), "");
        EXPECT_EQ(ErrorOf([&] { recording->Finish(); }), "");
    }
    EXPECT_TRUE(OnCard().contains("CONTENTS/CLIP/0001AA.XML"));
    EXPECT_TRUE(OnCard().contains("CONTENTS/CLIP/0003AA.XML"));
}

/// A medium that is full from any write on, and then has the room that was kept for the end.
TEST_F(RecordingTest, WhatWasRecordedIsKeptUpToTheLastWholeFrame) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 4);
    const std::string sound(std::size_t{1920} * 4, 's');
    int kept = 0;
    for (std::uint64_t writes = 20; writes < 60; writes += 2) {
        SCOPED_TRACE(writes);
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.Fail({IoError::NoSpace, Operation::WriteAt, "", writes});
        std::unique_ptr<Recording> recording;
        std::size_t taken = 0;
        if (Start(Parameters(), recording).empty()) {
            while (taken < units.size() && Add(*recording, units[taken], sound).empty()) {
                ++taken;
            }
        }
        files.HealAll();
        recording.reset(); // as when the host has gone
        if (taken == 0 && !OnCard().contains("CONTENTS/CLIP/0007AB.XML")) {
            EXPECT_TRUE(OnCard().empty());
            continue;
        }
        eCodeType type = CT_DV25_50I;
        const _tag_P2Clip clip = Scan(type);
        EXPECT_GE(clip.Duration, static_cast<std::int64_t>(taken));
        EXPECT_LE(clip.Duration, static_cast<std::int64_t>(taken + 1)) << "one without its sound";
        int packets = 0;
        std::int64_t position = 0;
        EXPECT_TRUE(
            ReadEssence(m_card.Folder().Path("CONTENTS/VIDEO/0007AB.MXF"), packets, position) ==
            Joined({units.begin(), units.begin() + clip.Duration}));
        EXPECT_EQ(OnCard().size(), 4U);
        ++kept;
        EmptyCard();
    }
    EXPECT_GT(kept, 5);
}

TEST_F(RecordingTest, NothingRemainsOfWhatIsDroppedOrNotSure) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    std::unique_ptr<Recording> recording;
    ASSERT_EQ(Start(Parameters(), recording), "");
    ASSERT_EQ(Add(*recording, units[0]), "");
    recording->Drop();
    recording.reset();
    EXPECT_TRUE(OnCard().empty()) << "dropped";
    struct Case {
        const char* what;
        test::Fault fault;
    };
    const Case cases[] = {
        {"full at the end", {IoError::NoSpace, Operation::WriteAt, "CLIP"}},
        {"flush", {IoError::Device, Operation::Flush, "AUDIO"}},
        {"read back", {IoError::Device, Operation::ReadAt, "VIDEO"}},
        {"names", {IoError::Exists, Operation::Commit, "CLIP"}},
        {"second sound", {IoError::ReadOnly, Operation::Create, "01.MXF"}},
    };
    for (const Case& each : cases) {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.Fail(each.fault);
        EXPECT_THAT(Record(Parameters(), units), HasSubstr("made to fail")) << each.what;
        EXPECT_TRUE(OnCard().empty()) << each.what;
    }
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetFreeSpace(10'000'000);
    EXPECT_THAT(Start(Parameters(), recording, 1000), HasSubstr("too little space"));
    EXPECT_EQ(Start(Parameters(), recording, 10), "");
}

} // namespace
} // namespace nqp2::worker
