// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/recording.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/NQP2Parser.h"
#include "tests/support/print_text.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/base/media_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

namespace nqp2::worker {
namespace {

using platform::IoError;
using test::Operation;
using testing::HasSubstr;

const RelatedClip kEarlier = {
    L"0006AB", {0x11223344, 0x5566, 0x7788, {1, 2, 3, 4, 5, 6, 7, 8}}, L"AAB10E1234"};

class RecordingTest : public testing::Test {
protected:
    RecordingParameters Parameters(eCodeType type = CT_DV25_50I) {
        RecordingParameters parameters;
        parameters.codeType = type;
        parameters.wave = {1, 2, 48000, 192000, 4, 16, 0};
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
                           const std::string& sound = {}, std::size_t count = 1) {
        return ErrorOf([&] { recording.Add(video, sound, count); });
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
            allVideo += Read("VIDEO/" + name).essence;
            allSound += Read("AUDIO/" + name + "00").essence;
            EXPECT_EQ(clip.ClipName, Name(name.c_str()));
            EXPECT_EQ(clip.Duration, i < 2 ? 3 : 2);
            EXPECT_EQ(clip.OffsetInShot, 3 * i);
            EXPECT_EQ(clip.StartTimecode, 100 + 3 * i);
            EXPECT_EQ(clip.TopClipGuid, i > 0 ? clips[0].GlobalClipGuid : GUID());
            EXPECT_EQ(clip.PreviousClipGuid,
                      i > 0 ? clips[i - 1].GlobalClipGuid : kEarlier.identifier);
            EXPECT_EQ(clip.NextClipGuid, i < 2 ? clips[i + 1].GlobalClipGuid : GUID());
            EXPECT_EQ(clip.NextClipName, i < 2 ? clips[i + 1].ClipName : CString());
        }
        EXPECT_TRUE(clips[0].PreviousClipName == kEarlier.name &&
                    clips[0].PreviousSerialNo == kEarlier.serialNo);
        EXPECT_EQ(clips[2].UserClipName, L"A <walk> & more");
        EXPECT_TRUE(allVideo == video);
        EXPECT_TRUE(allSound == sound);
    }
    _tag_P2Clip Scan() {
        const CArray<_tag_P2Clip> clips = ScanAll();
        EXPECT_EQ(clips.GetSize(), 1);
        return clips.IsEmpty() ? _tag_P2Clip() : clips[0];
    }
    [[nodiscard]] ReadBack Read(const std::string& file) const {
        return ReadEssence(m_card.Folder().Path("CONTENTS/" + file + ".MXF"));
    }

    test::CardBuilder m_card;
};

std::string Joined(const std::vector<std::string>& units) {
    return std::accumulate(units.begin(), units.end(), std::string());
}

/// A stream of one format is recorded as it is, and refused at its first frame by all others.
TEST_F(RecordingTest, EssenceAndMetadataAreReadBackAsTheyWere) {
    constexpr AVRational kPal = {25, 1};
    constexpr AVPixelFormat k422 = AV_PIX_FMT_YUV422P;
    constexpr AVPixelFormat kDeep422 = AV_PIX_FMT_YUV422P10;
    constexpr AVPixelFormat kDeep420 = AV_PIX_FMT_YUV420P10;
    const char* const class50 = "avcintra-class=50:flags=+ildct";
    const char* const class100 = "avcintra-class=100:flags=+ildct";
    const char* const class200 = "avcintra-class=200:flags=+ildct";
    struct Case {
        eCodeType type;
        TestEncoding encoding;
        const char* rate;
    };
    const Case cases[] = {
        {CT_DV25_50I, kDv25Pal, "50i"},
        {CT_DV25_5994I, {"dvvideo", 720, 480, {30000, 1001}, AV_PIX_FMT_YUV411P}, "59.94i"},
        {CT_DV50_50I, {"dvvideo", 720, 576, kPal, k422}, "50i"},
        {CT_DV50_2997P, {"dvvideo", 720, 480, {30000, 1001}, k422}, "29.97p"},
        {CT_DV100_1080_50I, {"dvvideo", 1440, 1080, kPal, k422}, "50i"},
        {CT_DV100_720_50P, {"dvvideo", 960, 720, {50, 1}, k422}, "50p"},
        {CT_AVCI50_1080_50I, {"libx264", 1440, 1080, kPal, kDeep420, class50}, "50i"},
        {CT_AVCI50_720_50P, {"libx264", 960, 720, {50, 1}, kDeep420, "avcintra-class=50"}, "50p"},
        {CT_AVCI100_1080_50I, {"libx264", 1920, 1080, kPal, kDeep422, class100}, "50i"},
        {CT_AVCI100_1080_25P, {"libx264", 1920, 1080, kPal, kDeep422, "avcintra-class=100"}, "25p"},
        {CT_AVCI200_1080_50I, {"libx264", 1920, 1080, kPal, kDeep422, class200}, "50i"},
        {CT_AVCI200_1080_50P,
         {"libx264", 1920, 1080, {50, 1}, kDeep422, "avcintra-class=100"},
         "50p"},
    };
    constexpr int kFrames = 2; // fewer than a mean rate is made of
    for (const Case& each : cases) {
        SCOPED_TRACE(CodeTypeName(each.type));
        const std::vector<std::string> units = EncodePictures(each.encoding, kFrames);
        if (units.empty()) {
            std::cout << "no encoder " << each.encoding.encoder << ": left out\n";
            continue;
        }
        for (const Case& other : cases) {
            const std::string error =
                ErrorOf([&] { CheckAccessUnit(*FindRecordingFormat(other.type), units[0], true); });
            // Frames of two fields may be of one moment, and not the other way round.
            const bool mayBe =
                each.type == CT_AVCI100_1080_50I && other.type == CT_AVCI100_1080_25P;
            EXPECT_EQ(error.empty(), mayBe || other.type == each.type)
                << CodeTypeName(other.type) << error;
        }
        RecordingParameters parameters = Parameters(each.type);
        parameters.startTimecode = 20;
        ASSERT_EQ(Record(parameters, units), "");
        const _tag_P2Clip clip = Scan();
        EXPECT_EQ(ClipTimecode(clip),
                  FrameTimecode(20, *FindFrameRate(clip.FrameRate), clip.DropFrame != 0));
        EXPECT_EQ(CodeTypeFromCodec(clip.CodecName, clip.FrameRate, clip.AvcIntraClass50,
                                    clip.CodecClass),
                  each.type);
        EXPECT_EQ(clip.FrameRate, Name(each.rate));
        EXPECT_EQ(clip.Duration, kFrames);
        const ReadBack video = Read("VIDEO/0007AB");
        EXPECT_TRUE(video.essence == Joined(units));
        EXPECT_EQ(video.packets, kFrames);
        EXPECT_EQ(clip.VideoStartByteOffset, video.position);
        EXPECT_EQ(clip.VideoDataSize, static_cast<std::int64_t>(video.essence.size()));
        const MediaFacts facts =
            ReadMediaFile(m_card.Folder().Path("CONTENTS/VIDEO/0007AB.MXF"), [] { return true; });
        EXPECT_EQ(facts.frames, kFrames);
        EXPECT_EQ(facts.width, each.encoding.width);
        EXPECT_EQ(facts.height, each.encoding.height);
        EXPECT_EQ(av_cmp_q({facts.rate.frames, facts.rate.seconds}, each.encoding.rate), 0);
        EmptyCard();
    }
}

TEST_F(RecordingTest, WrongDataIsRefusedAndTheRecordingGoesOn) {
    std::unique_ptr<Recording> recording;
    ASSERT_EQ(Start(Parameters(), recording), "");
    std::unique_ptr<Recording> refused;
    EXPECT_THAT(Start(Parameters(), refused), HasSubstr("already")) << "the name is claimed";
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    const std::string wrong[] = {"x", units[0].substr(1), units[0] + "x", Joined(units),
                                 std::string(144000, '\xFF')};
    for (const std::string& unit : wrong) {
        EXPECT_NE(Add(*recording, unit), "");
    }
    EXPECT_NE(Add(*recording, "", "abc"), "") << "no whole sample";
    for (const std::size_t count : {0U, 7U, 289000U}) {
        EXPECT_NE(Add(*recording, Joined(units), "", count), "");
    }
    EXPECT_NE(Add(*recording, "", "abcd", 0xFFFFFFFF), "");
    EXPECT_NE(Add(*recording, units[0] + wrong[4], std::string(15360, 's') + "ab", 2), "");
    EXPECT_EQ(Add(*recording, units[1]), "") << "behind the first of those";
    EXPECT_EQ(ErrorOf([&] { recording->Finish(); }), "");
    EXPECT_EQ(Scan().Duration, 2);
    EXPECT_TRUE(Read("AUDIO/0007AB00").essence == std::string(3840, 's') + std::string(3840, '\0'));
    EmptyCard();
    ASSERT_EQ(Start(Parameters(CT_AVCI100_1080_50I), recording), "");
    EXPECT_THAT(Add(*recording, std::string("\0\0\0\1\x09\x10\0\0\0\1\x65", 11)),
                HasSubstr("no parameter sets"));
    EXPECT_THAT(ErrorOf([&] { recording->Finish(); }), HasSubstr("No frame"));
}

TEST_F(RecordingTest, GoesOnInLinkedClipsWhereAFileIsFull) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 8);
    std::string sound;
    for (std::size_t i = 0; i < units.size() * 1920; ++i) {
        sound += std::string(2, static_cast<char>(i * 31 + i / 1920));
    }
    RecordingParameters parameters = Parameters();
    parameters.wave.nChannels = 1;
    parameters.startTimecode = 100;
    parameters.userClipName = L"A <walk> & more";
    parameters.relations.previous = kEarlier;
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
    std::unique_ptr<Recording> atOnce;
    ASSERT_EQ(Start(parameters, atOnce), "");
    ASSERT_EQ(Add(*atOnce, Joined(units), sound, units.size()), "");
    ASSERT_EQ(ErrorOf([&] { atOnce->Finish(); }), "");
    ExpectThreeClips(Joined(units), sound);
}

TEST_F(RecordingTest, NothingRemainsOfWhatIsDroppedOrNotSure) {
    const std::vector<std::string> units = EncodePictures(kDv25Pal, 2);
    std::unique_ptr<Recording> recording;
    ASSERT_EQ(Start(Parameters(), recording), "");
    ASSERT_EQ(Add(*recording, units[0]), "");
    recording->Drop();
    recording.reset();
    EXPECT_TRUE(OnCard().empty()) << "dropped";
    const test::Fault faults[] = {
        {IoError::NoSpace, Operation::WriteAt, "CLIP"},
        {IoError::Device, Operation::Flush, "AUDIO"},
        {IoError::Device, Operation::ReadAt, "VIDEO"},
        {IoError::Exists, Operation::Commit, "CLIP"},
        {IoError::ReadOnly, Operation::Create, "01.MXF"},
    };
    for (const test::Fault& fault : faults) {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        files.Fail(fault);
        EXPECT_THAT(Record(Parameters(), units), HasSubstr("made to fail"));
        EXPECT_TRUE(OnCard().empty()) << static_cast<int>(fault.operation.value());
    }
    test::FaultyFileSystem files;
    const platform::ScopedFileSystem use(files);
    files.SetFreeSpace(10'000'000);
    EXPECT_THAT(Start(Parameters(), recording, 1000), HasSubstr("too little space"));
    EXPECT_EQ(Start(Parameters(), recording, 10), "");
}

} // namespace
} // namespace nqp2::worker
