// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// One file of a recording's parts. The parts are written by the worker's own OP-Atom files and by
// libavformat; what comes out is played by libavcodec, which knows nothing of how it was made.

#include "tests/support/print_text.h"
#include "tests/support/small_medium.h"
#include "tests/worker/essence_maker.h"
#include "tests/worker/transfer_fixture.h"
#include "worker/essence_file.h"
#include "worker/rewrap/file_maker.h"
#include "worker/rewrap/recording_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

constexpr AVPixelFormat kDeep422 = AV_PIX_FMT_YUV422P10LE;
constexpr AVPixelFormat kDeep420 = AV_PIX_FMT_YUV420P10LE;
constexpr AVRational k2997 = {30000, 1001};
constexpr AVRational k5994 = {60000, 1001};
constexpr RewrapContainer kContainers[] = {RewrapContainer::Mov, RewrapContainer::Mxf,
                                           RewrapContainer::Mkv, RewrapContainer::Mp4};
constexpr const char* kSuffixes[] = {".mov", ".mxf", ".mkv", ".mp4"};

/// Samples of one channel: noise, another for each seed.
std::string Samples(std::int64_t count, int bits, unsigned seed) {
    std::string bytes(static_cast<std::size_t>(count * bits / 8), '\0');
    for (char& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        byte = static_cast<char>(seed >> 24U);
    }
    return bytes;
}

class RewrapTest : public testing::Test {
protected:
    RewrapTest() { EXPECT_TRUE(platform::Files().OpenFolder(m_from.Path(), m_folder)); }

    RewrapRequest Request(RewrapContainer container, const TestEncoding& encoding,
                          bool interlaced) const {
        RewrapRequest request;
        request.container = container;
        request.target = InterfaceRoot(m_to.Path()) + L"\\file" +
                         Name(kSuffixes[static_cast<std::size_t>(container)]);
        request.rate = {encoding.rate.num, encoding.rate.den};
        request.interlaced = interlaced;
        request.aspectWidth = 16;
        request.aspectHeight = 9;
        return request;
    }
    std::string PathOf(const RewrapRequest& request) const {
        return m_to.Path(std::string("file") +
                         kSuffixes[static_cast<std::size_t>(request.container)]);
    }

    /// A part of those units, and its sound.
    RewrapPart Part(const std::string& name, const TestEncoding& encoding, bool interlaced,
                    const std::vector<std::string>& units, const std::vector<std::string>& sounds,
                    int bits = 16) {
        std::filesystem::remove(m_from.Path(name + ".MXF"));
        VideoFormat format;
        format.codec =
            std::string(encoding.encoder) == "dvvideo" ? VideoCodec::Dv : VideoCodec::AvcIntra;
        format.width = encoding.width;
        format.height = encoding.height;
        format.interlaced = interlaced;
        format.rate = {encoding.rate.num, encoding.rate.den};
        format.timecode = "00:00:00:00";
        EssenceFile video(*m_folder, name + ".MXF", format);
        for (const std::string& unit : units) {
            video.Add(unit);
        }
        video.Finish(0);
        video.Commit();
        RewrapPart part;
        part.name = Name(name.c_str());
        part.video = InterfaceRoot(m_from.Path(name + ".MXF"));
        for (std::size_t i = 0; i < sounds.size(); ++i) {
            const std::string file = name + "0" + std::to_string(i) + ".MXF";
            std::filesystem::remove(m_from.Path(file));
            EssenceFile sound(*m_folder, file, SoundFormat{bits, format.rate});
            sound.Add(sounds[i]);
            sound.Finish(0);
            sound.Commit();
            part.sounds.Add(InterfaceRoot(m_from.Path(file)));
        }
        return part;
    }

    /// The sentence of its failure, of which nothing may be left.
    std::string Make(const RewrapRequest& request) {
        m_result = {};
        const auto before = FilesBelow(m_to.Path());
        RecordingWatch watch;
        const std::string error =
            ErrorOf([&] { m_result = rewrap::MakeFile(rewrap::Checked(request), watch); });
        EXPECT_TRUE(error.empty() || FilesBelow(m_to.Path()) == before) << error;
        return error;
    }

    test::TempFolder m_from;
    test::TempFolder m_to;
    std::unique_ptr<platform::Folder> m_folder;
    RewrapResult m_result;
};

constexpr const char* kClass50 = "avcintra-class=50:flags=+ildct";
constexpr const char* kClass100 = "avcintra-class=100:flags=+ildct";
constexpr const char* kClass200 = "avcintra-class=200:flags=+ildct";

struct CodecRow {
    TestEncoding encoding;
    bool interlaced;
    const char* tag; ///< in MOV
    int bits;
    const char* timecode;
};
const CodecRow kCodecRows[] = {
    {{"dvvideo", 720, 480, k2997, AV_PIX_FMT_YUV411P}, true, "dvc ", 16, "01:00:00;02"},
    {{"dvvideo", 720, 576, {25, 1}, AV_PIX_FMT_YUV411P}, true, "dvpp", 16, "10:00:00:24"},
    {{"dvvideo", 720, 576, {25, 1}, AV_PIX_FMT_YUV420P}, true, "dvcp", 24, ""},
    {{"dvvideo", 720, 480, k2997, AV_PIX_FMT_YUV422P}, true, "dv5n", 16, "00:10:00;00"},
    {{"dvvideo", 720, 576, {25, 1}, AV_PIX_FMT_YUV422P}, true, "dv5p", 16, "23:59:59:24"},
    {{"dvvideo", 1440, 1080, {25, 1}, AV_PIX_FMT_YUV422P}, true, "dvh5", 16, "00:00:00:00"},
    {{"dvvideo", 1280, 1080, k2997, AV_PIX_FMT_YUV422P}, true, "dvh6", 16, "01:00:00:00"},
    {{"dvvideo", 960, 720, {50, 1}, AV_PIX_FMT_YUV422P}, false, "dvhq", 16, "01:00:00:48"},
    {{"dvvideo", 960, 720, k5994, AV_PIX_FMT_YUV422P}, false, "dvhp", 16, "01:01:00;04"},
    {{"libx264", 1440, 1080, {25, 1}, kDeep420, kClass50}, true, "ai55", 24, "01:00:00:00"},
    {{"libx264", 1440, 1080, k2997, kDeep420, kClass50}, true, "ai56", 16, "01:00:00;00"},
    {{"libx264", 960, 720, {50, 1}, kDeep420, "avcintra-class=50"}, false, "ai5q", 16, ""},
    {{"libx264", 960, 720, k5994, kDeep420, "avcintra-class=50"}, false, "ai5p", 16, ""},
    {{"libx264", 1920, 1080, {25, 1}, kDeep422, kClass100}, true, "ai15", 16, "00:00:01:00"},
    {{"libx264", 1920, 1080, k2997, kDeep422, kClass100}, true, "ai16", 24, "00:00:01;00"},
    {{"libx264", 1920, 1080, {25, 1}, kDeep422, "avcintra-class=100"}, false, "ai12", 16, ""},
    {{"libx264", 1920, 1080, k2997, kDeep422, "avcintra-class=100"}, false, "ai13", 16, ""},
    {{"libx264", 1280, 720, {50, 1}, kDeep422, "avcintra-class=100"}, false, "ai1q", 16, ""},
    {{"libx264", 1280, 720, k5994, kDeep422, "avcintra-class=100"}, false, "ai1p", 16, ""},
    {{"libx264", 1920, 1080, {25, 1}, kDeep422, kClass200}, true, "avc1", 16, ""},
};

/// A recording of three pictures and two channels, whole and in two parts.
class CodecRewrapTest : public RewrapTest {
protected:
    static constexpr int kFrames = 3;
    static constexpr int kFirst = 2; ///< in the first part

    /// False when there is no such encoder here.
    bool Record(const CodecRow& row) {
        const std::vector<std::string> units = EncodePictures(row.encoding, kFrames);
        if (units.empty()) {
            return false;
        }
        const FrameRate rate = {row.encoding.rate.num, row.encoding.rate.den};
        const auto bytes = [&](int frames) {
            return static_cast<std::size_t>(rewrap::SamplesUpTo(frames, rate) * row.bits / 8);
        };
        m_parts.clear();
        m_sounds = {Samples(rewrap::SamplesUpTo(kFrames, rate), row.bits, 1),
                    Samples(rewrap::SamplesUpTo(kFrames, rate), row.bits, 2)};
        // Where a frame is no whole number of samples, silence fills the last one of a part.
        m_sureBytes = rate.seconds == 1 ? bytes(kFrames) : bytes(kFirst);
        const auto add = [&](const char* name, int from, int to) {
            std::vector<std::string> sounds;
            for (const std::string& sound : m_sounds) {
                sounds.push_back(sound.substr(bytes(from), bytes(to) - bytes(from)));
            }
            m_parts.push_back(Part(name, row.encoding, row.interlaced,
                                   {units.begin() + from, units.begin() + to}, sounds, row.bits));
        };
        add("whole", 0, kFrames);
        m_source = Play(m_from.Path("whole.MXF"));
        m_parts.clear();
        add("0001AA", 0, kFirst);
        add("0002AA", kFirst, kFrames);
        EXPECT_EQ(m_source.pictures.size(), std::size_t{kFrames});
        return true;
    }

    RewrapRequest RequestFor(const CodecRow& row, RewrapContainer container) const {
        RewrapRequest request = Request(container, row.encoding, row.interlaced);
        request.timecode = Name(row.timecode);
        request.title = L"K\u00F6ln";
        request.reel = L"A001";
        request.date = L"2026-01-02T03:04:05+09:00";
        request.chapters.Add({2, L"memo"});
        for (const RewrapPart& part : m_parts) {
            request.parts.Add(part);
        }
        return request;
    }

    /// MP4 holds no PCM: takes the sound away. False when it does not hold the pictures either.
    bool FitMp4(const CodecRow& row, RewrapRequest& request) {
        EXPECT_THAT(Make(request), HasSubstr("can be put into MOV, MXF and MKV."));
        for (RewrapPart& part : request.parts) {
            part.sounds.RemoveAll();
        }
        if (std::string(row.encoding.encoder) != "dvvideo") {
            return true;
        }
        EXPECT_THAT(Make(request), HasSubstr("DV is not put into MP4"));
        return false;
    }

    void ExpectAsItWas(const CodecRow& row, const RewrapRequest& request) {
        SCOPED_TRACE(PathOf(request));
        const Played played = Play(PathOf(request));
        EXPECT_FALSE(played.hasFault);
        EXPECT_EQ(played.pictures, m_source.pictures);
        EXPECT_TRUE(request.container != RewrapContainer::Mov || played.tag == row.tag)
            << played.tag;
        const AVFieldOrder order = row.encoding.height < 720 ? AV_FIELD_BB
                                   : row.interlaced          ? AV_FIELD_TT
                                                             : AV_FIELD_PROGRESSIVE;
        EXPECT_TRUE(request.container != RewrapContainer::Mov || played.order == order)
            << played.order;
        EXPECT_TRUE(*row.timecode == '\0' || played.timecode == row.timecode) << played.timecode;
        EXPECT_EQ(played.marks.size(), request.container == RewrapContainer::Mxf ? 0U : 2U);
        EXPECT_EQ(m_result.frames, std::uint32_t{kFrames});
        EXPECT_EQ(played.sound.size(), request.container == RewrapContainer::Mp4 ? 0U : 2U);
        for (std::size_t i = 0; i < played.sound.size(); ++i) {
            EXPECT_TRUE(played.sound[i].substr(0, m_sureBytes) ==
                        m_sounds[i].substr(0, m_sureBytes));
            EXPECT_LE(played.sound[i].size(), m_sounds[i].size() + 6);
        }
    }

    std::vector<RewrapPart> m_parts;
    std::vector<std::string> m_sounds;
    std::size_t m_sureBytes = 0;
    Played m_source;
};

TEST_F(CodecRewrapTest, EveryCodecComesOutAsItWentInAndBearsItsMark) {
    for (const CodecRow& row : kCodecRows) {
        SCOPED_TRACE(std::string(row.tag) + " " + std::to_string(row.encoding.rate.num));
        if (!Record(row)) {
            continue; // no such encoder here
        }
        for (const RewrapContainer container : kContainers) {
            RewrapRequest request = RequestFor(row, container);
            if (container == RewrapContainer::Mp4 && !FitMp4(row, request)) {
                continue;
            }
            ASSERT_EQ(Make(request), "") << PathOf(request);
            ExpectAsItWas(row, request);
            std::filesystem::remove(PathOf(request));
        }
    }
}

class DvRewrapTest : public RewrapTest {
protected:
    /// A part of so many frames of two channels; `surplus` samples more than that.
    RewrapPart DvPart(const std::string& name, int frames, int surplus = 0) {
        return Part(name, kDv25Pal, true, {m_units.begin(), m_units.begin() + frames},
                    {Samples(frames * 1920 + surplus, 16, 7), Samples(frames * 1920, 16, 8)});
    }
    RewrapRequest DvRequest(const std::vector<RewrapPart>& parts,
                            RewrapContainer container = RewrapContainer::Mov) const {
        RewrapRequest request = Request(container, kDv25Pal, true);
        for (const RewrapPart& part : parts) {
            request.parts.Add(part);
        }
        return request;
    }

    std::vector<std::string> m_units = EncodePictures(kDv25Pal, 8);
};

TEST_F(DvRewrapTest, CutsAreMadeAtThePictureAndItsSample) {
    RewrapPart part = DvPart("0001AA", 8);
    RewrapPart other = part;
    part.first = 5;
    part.frames = 2;
    other.first = 1;
    other.frames = 3;
    const std::string sounds[] = {Samples(8 * 1920, 16, 7), Samples(8 * 1920, 16, 8)};
    for (const bool oneTrack : {false, true}) {
        RewrapRequest request = DvRequest({part, other});
        request.oneTrack = oneTrack;
        ASSERT_EQ(Make(request), "");
        const Played played = Play(PathOf(request));
        const Played whole = Play(m_from.Path("0001AA.MXF"));
        const std::vector<std::size_t> wanted = {whole.pictures[5], whole.pictures[6],
                                                 whole.pictures[1], whole.pictures[2],
                                                 whole.pictures[3]};
        EXPECT_EQ(played.pictures, wanted);
        std::string channels[2];
        for (std::size_t i = 0; i < 2; ++i) {
            channels[i] = sounds[i].substr(5 * 3840, 2 * 3840) + sounds[i].substr(3840, 3 * 3840);
        }
        std::string both;
        for (std::size_t at = 0; at < channels[0].size(); at += 2) {
            both += channels[0].substr(at, 2) + channels[1].substr(at, 2);
        }
        EXPECT_TRUE(played.sound == (oneTrack
                                         ? std::vector<std::string>{both}
                                         : std::vector<std::string>{channels[0], channels[1]}));
        EXPECT_EQ(m_result.soundTracks, oneTrack ? 1U : 2U);
        EXPECT_EQ(m_result.samples, 5U * 1920);
        std::filesystem::remove(PathOf(request));
    }
}

/// Each row spoils one thing of two good parts.
TEST_F(DvRewrapTest, WhatIsNotAsPromisedIsAnErrorThatNamesThePart) {
    const RewrapPart first = DvPart("0001AA", 4);
    const RewrapPart second = DvPart("0002AA", 3);
    const TestEncoding ntsc = {"dvvideo", 720, 480, k2997, AV_PIX_FMT_YUV411P};
    const RewrapPart foreign = Part("0003AA", ntsc, true, EncodePictures(ntsc, 2),
                                    {Samples(3203, 16, 1), Samples(3203, 16, 1)});
    const RewrapPart longer = DvPart("0004AA", 3, 1920 * 2);
    std::filesystem::resize_file(m_from.Path("0004AA.MXF"), 300'000);
    RewrapPart loud = second;
    loud.sounds[0] = longer.sounds[0];
    RewrapPart quiet = DvPart("0005AA", 6);
    quiet.sounds = second.sounds;
    using Change = std::function<void(RewrapRequest&)>;
    const struct {
        Change change;
        const char* error;
    } kRows[] = {
        {[&](auto& r) { r.parts[1] = foreign; }, "0003AA is of another format than 0001AA"},
        {[&](auto& r) { r.parts[1] = longer; }, "0004AA is damaged or cut off"},
        {[&](auto& r) { r.parts[1] = loud; }, "0002AA has sound that is longer"},
        {[&](auto& r) { r.parts[1] = quiet; }, "0005AA has sound that is shorter"},
        {[&](auto& r) { r.parts[1].promised = 4; }, "0002AA has 3 pictures, and its metadata"},
        {[&](auto& r) { r.parts[1].first = 2, r.parts[1].frames = 2; }, "0002AA is cut off"},
        {[&](auto& r) { r.parts[1].video = L"/none"; }, "There is no file /none of 0002AA"},
        {[&](auto& r) { r.parts[1].video = InterfaceRoot(m_from.Path()); }, "There is no file"},
        {[&](auto& r) { r.parts[1].sounds.RemoveAll(); }, "more and with fewer sound files"},
        {[&](auto& r) { r.parts.RemoveAll(); }, "no parts"},
        {[&](auto& r) {
             r.rate = {30000, 1001};
         },
         "has 25/1 pictures a second"},
        {[&](auto& r) {
             r.rate = {25, 0};
         },
         "a rate that is none"},
        {[&](auto& r) {
             r.rate = {2'000'000'000, 1};
         },
         "a rate that is none"},
        {[&](auto& r) { r.container = static_cast<RewrapContainer>(4); }, "a container"},
        {[&](auto& r) { r.join = static_cast<RewrapJoin>(2); }, "a way to join"},
        {[&](auto& r) { r.join = RewrapJoin::Bytes; }, "too many files of sound"},
        {[&](auto& r) { r.aspectWidth = 0; }, "a shape"},
        {[&](auto& r) { r.timecode = L"01:00:00;00"; }, "which no frame has at this rate"},
        {[&](auto& r) { r.timecode = L"01:00:00:25"; }, "which no frame has"},
        {[&](auto& r) { r.timecode = L"24:00:00:00"; }, "which no frame has"},
        {[&](auto& r) { r.timecode = L"noon"; }, "which no frame has"},
        {[&](auto& r) { r.date = L"yesterday"; }, "a date"},
        {[&](auto& r) {
             r.chapters.Add({7, L"late"});
         },
         "a chapter behind its end"},
        {[&](auto& r) { r.target = L"file.mov"; }, "does not tell the folder"},
        {[&](auto& r) { r.target = r.target + L"/../x"; }, "leads upward"},
        {[&](auto& r) { r.target = InterfaceRoot(m_to.Path()) + L"\\.hidden"; }, "is no name"},
    };
    EXPECT_EQ(Make(DvRequest({first, second})), "");
    EXPECT_EQ(m_result.frames, 7U);
    EXPECT_THAT(Make(DvRequest({first})), HasSubstr("is there already"));
    std::filesystem::remove(m_to.Path("file.mov"));
    for (const auto& row : kRows) {
        RewrapRequest request = DvRequest({first, second});
        row.change(request);
        EXPECT_THAT(Make(request), HasSubstr(row.error));
    }
}

TEST_F(DvRewrapTest, SoundOfOddLengthIsKeptOrTold) {
    RewrapPart part = DvPart("0001AA", 4);
    RewrapPart longer = DvPart("0002AA", 5);
    part.promised = 8;                 // as where half-frames are counted
    part.sounds[0] = longer.sounds[0]; // one frame more
    const std::string sound = Samples(5 * 1920, 16, 7);
    ASSERT_EQ(Make(DvRequest({part})), "");
    EXPECT_TRUE(Play(m_to.Path("file.mov")).sound[0] == sound);
    EXPECT_EQ(m_result.remarks.GetSize(), 0);
    ASSERT_EQ(Make(DvRequest({part}, RewrapContainer::Mxf)), "");
    EXPECT_TRUE(Play(m_to.Path("file.mxf")).sound[0] == sound.substr(0, 4 * 3840));
    ASSERT_EQ(m_result.remarks.GetSize(), 1);
    EXPECT_THAT(platform::Utf8FromText(m_result.remarks[0].View()), HasSubstr("1920 samples"));
}

/// Bytes in the middle of a file that a medium changes, room that is gone, and any call that fails.
TEST_F(DvRewrapTest, WhatGoesWrongLeavesNothing) {
    const RewrapRequest request = DvRequest({DvPart("0001AA", 4), DvPart("0002AA", 3)});
    EXPECT_GT(SweepFaults(m_to.Path(), [&] { return Make(request); }), 10);
    for (const std::uint64_t stopAt : {0U, 1U, 500'000U, 900'000U}) {
        RecordingWatch watch;
        watch.stopAt = stopAt;
        EXPECT_EQ(ErrorOf([&] { rewrap::MakeFile(rewrap::Checked(request), watch); }),
                  "Cancelled.");
        EXPECT_TRUE(FilesBelow(m_to.Path()).empty()) << stopAt;
    }
    RecordingWatch unwilling;
    unwilling.mayFinish = false;
    EXPECT_EQ(ErrorOf([&] { rewrap::MakeFile(rewrap::Checked(request), unwilling); }),
              "Cancelled.");
    EXPECT_TRUE(FilesBelow(m_to.Path()).empty());
}

TEST_F(DvRewrapTest, AMediumThatFillsUpIsAnError) {
    const RewrapPart part = DvPart("0001AA", 8);
    test::WithMedium(m_to.Path(), "2m", [&] {
        test::FaultyFileSystem files;
        const platform::ScopedFileSystem use(files);
        EXPECT_EQ(Make(DvRequest({part})), "");
        std::filesystem::remove(m_to.Path("file.mov"));
        files.SetHook([&](test::Operation operation, const std::string&) {
            if (operation == test::Operation::Create) {
                std::ofstream(m_to.Path("ballast")) << std::string(1'500'000, 'b');
            }
        });
        RecordingWatch watch;
        EXPECT_THAT(ErrorOf([&] { rewrap::MakeFile(rewrap::Checked(DvRequest({part})), watch); }),
                    HasSubstr("No space left"));
        EXPECT_EQ(FilesBelow(m_to.Path()).size(), 1U) << "the ballast";
    });
}

/// Units as cameras have them, without what decoders of AVC-Intra know by heart.
TEST_F(RewrapTest, BareUnitsOfAvcIntraPlayInEveryContainer) {
    constexpr std::size_t kDelimiter = 6;
    constexpr std::size_t kSets = 512; // and what fills them up
    const TestEncoding rows[] = {
        {"libx264", 1920, 1080, {25, 1}, kDeep422, "avcintra-class=100:flags=+ildct"},
        {"libx264", 1280, 720, {50, 1}, kDeep422, "avcintra-class=100"},
    };
    for (const TestEncoding& encoding : rows) {
        const bool interlaced = encoding.height == 1080;
        const std::vector<std::string> units = EncodePictures(encoding, 3);
        if (units.empty()) {
            GTEST_SKIP() << "no such encoder";
        }
        std::vector<std::string> bare;
        for (const std::string& unit : units) {
            bare.push_back(unit.substr(0, kDelimiter) + unit.substr(kDelimiter + kSets));
        }
        Part("whole", encoding, interlaced, units, {});
        const Played source = Play(m_from.Path("whole.MXF"));
        for (const RewrapContainer container : kContainers) {
            RewrapRequest request = Request(container, encoding, interlaced);
            request.parts.Add(Part("bare", encoding, interlaced, bare, {}));
            ASSERT_EQ(Make(request), "");
            const Played played = Play(PathOf(request));
            EXPECT_FALSE(played.hasFault);
            EXPECT_EQ(played.pictures, source.pictures) << PathOf(request);
            std::filesystem::remove(PathOf(request));
        }
    }
}

/// A sector that a medium has lost reads as zeros or as something else that was there.
TEST_F(RewrapTest, PicturesWithALostSectorAreAnErrorThatNamesThem) {
    constexpr std::size_t kSector = 512;
    const CodecRow* const rows[] = {&kCodecRows[0], &kCodecRows[6], &kCodecRows[11],
                                    &kCodecRows[13]};
    for (const CodecRow* const row : rows) {
        std::vector<std::string> units = EncodePictures(row->encoding, 3);
        const bool isDv = !units.empty() && units[1][0] != 0;
        const std::string good = units.empty() ? "" : units[1];
        // The first sector of AVC-Intra holds what all other pictures have, too.
        for (std::size_t at = isDv ? 0 : 2 * kSector; at < good.find_last_not_of('\0');
             at += good.size() / 23) {
            SCOPED_TRACE(std::string(row->tag) + " " + std::to_string(at));
            const bool isPadding = good.find_first_not_of('\0', at) > at + kSector;
            if (isPadding || good.find_first_not_of('\0', at + kSector) == std::string::npos) {
                continue;
            }
            // Noise within a piece of H.264 is seen by who decodes it, another picture here.
            const std::string other =
                std::string("\0\0\1\x65\x88", 5) + good.substr(at + 5, kSector - 5);
            for (const std::string& lost :
                 {std::string(kSector, '\0'), isDv ? Samples(256, 16, 1) : other}) {
                units[1] = std::string(good).replace(at, kSector, lost);
                RewrapRequest request =
                    Request(RewrapContainer::Mov, row->encoding, row->interlaced);
                request.parts.Add(Part("0001AA", row->encoding, row->interlaced, units, {}));
                // One more picture may be seen by the rate of so few already.
                EXPECT_THAT(Make(request),
                            HasSubstr(lost == other
                                          ? "0001AA "
                                          : "0001AA is damaged or cut off at picture 1: "));
            }
        }
    }
}

class SplitRewrapTest : public RewrapTest {
protected:
    /// The packets of a file from one share of it to another.
    RewrapPart Stretch(const std::string& of, double from, double to) {
        constexpr std::size_t kPacket = 192;
        const std::string bytes = FilesBelow(m_from.Path()).at(of);
        const auto at = [&](double share) {
            return static_cast<std::size_t>(share * static_cast<double>(bytes.size() / kPacket)) *
                   kPacket;
        };
        RewrapPart part;
        part.name = Name(std::to_string(from).c_str());
        part.video = InterfaceRoot(
            m_from.Write("parts/" + of + std::to_string(from) + "-" + std::to_string(to),
                         bytes.substr(at(from), at(to) - at(from))));
        return part;
    }
    RewrapRequest BytesRequest(RewrapContainer container, const std::vector<RewrapPart>& parts,
                               std::uint32_t promised) const {
        RewrapRequest request = Request(container, kDv25Pal, false);
        request.join = RewrapJoin::Bytes;
        request.timecode = L"10:00:00:00";
        for (const RewrapPart& each : parts) {
            request.parts.Add(each);
        }
        request.parts[0].promised = parts.size() == 1 ? promised : 0;
        return request;
    }
};

/// A stream of bytes, split as cameras do it, and what is wrong with it.
TEST_F(SplitRewrapTest, SplitStreamsAreOneAndWhatIsMissingIsTold) {
    constexpr double kBeforeWrap =
        95'442.2; // seconds; the clock of 33 bits begins anew at ...443.7
    const std::string whole = m_from.Path("whole.mts");
    const std::string wrapped = m_from.Path("wrapped.mts");
    if (!WriteTransportStream(whole, 75, 1) || !WriteTransportStream(wrapped, 75, kBeforeWrap)) {
        GTEST_SKIP() << "no such encoders";
    }
    const Played source = Play(whole);
    ASSERT_EQ(source.pictures.size(), 75U);
    const auto part = [&](const std::string& of, double from, double to) {
        return Stretch(of, from, to);
    };
    const std::string bytes = FilesBelow(m_from.Path()).at("whole.mts");
    const std::size_t middle = bytes.size() / 192 / 2 * 192;
    m_from.Write("zeroed.mts", std::string(bytes).replace(middle + 1000, 300, 300, '\0'));
    m_from.Write("lost.mts", std::string(bytes).replace(middle + 5, 1, "\xC1"));
    const std::string lost = "0.000000 is damaged at byte " + std::to_string(middle + 5);
    const struct {
        std::vector<RewrapPart> parts;
        std::uint32_t promised;
        const char* error;
    } kRows[] = {
        {{part("zeroed.mts", 0, 1)}, 0, "0.000000 is damaged at byte "},
        {{part("zeroed.mts", 0, 0.3), part("zeroed.mts", 0.3, 1)}, 0, "0.300000 is damaged at"},
        {{part("lost.mts", 0, 1)}, 0, lost.c_str()},
        {{part("whole.mts", 0, 1)}, 75, ""},
        {{part("whole.mts", 0, 0.4), part("whole.mts", 0.4, 0.41), part("whole.mts", 0.41, 1)},
         75,
         ""},
        {{part("wrapped.mts", 0, 0.5), part("wrapped.mts", 0.5, 1)}, 75, ""},
        {{part("whole.mts", 0, 0.3), part("whole.mts", 0.6, 1)}, 0, "Something is missing in 0.0"},
        {{part("whole.mts", 0, 0.6), part("whole.mts", 0.3, 1)}, 0, "The clock goes back in 0.0"},
        {{part("whole.mts", 0.5, 1), part("whole.mts", 0, 0.5)}, 0, "The clock goes back"},
        {{part("whole.mts", 0, 0.7)}, 75, "0.000000 has "},
        {{part("whole.mts", 0, 1)}, 76, ""},
    };
    for (const auto& row : kRows) {
        for (const RewrapContainer container : kContainers) {
            const RewrapRequest request = BytesRequest(container, row.parts, row.promised);
            if (container == RewrapContainer::Mxf) {
                EXPECT_THAT(Make(request), HasSubstr("into MOV, MKV and MP4"));
                continue;
            }
            const std::string error = Make(request);
            ASSERT_TRUE(*row.error == '\0' ? error.empty() : error.starts_with(row.error)) << error;
            if (*row.error != '\0') {
                break;
            }
            const Played played = Play(PathOf(request));
            EXPECT_EQ(played.pictures, source.pictures) << PathOf(request);
            EXPECT_TRUE(played.sound == source.sound) << PathOf(request);
            EXPECT_EQ(played.timecode, "10:00:00:00");
            EXPECT_EQ(m_result.remarks.GetSize(), row.promised == 76 ? 1 : 0);
            std::filesystem::remove(PathOf(request));
        }
    }
}

/// A file cut anywhere, or with a stretch of noise, is refused or comes out whole: never less.
TEST_F(DvRewrapTest, DamagedFilesNeverComeOutAsGoodOnes) {
    const RewrapPart part = DvPart("0001AA", 4);
    const std::string video = FilesBelow(m_from.Path()).at("0001AA.MXF");
    const std::string sound = FilesBelow(m_from.Path()).at("0001AA00.MXF");
    ASSERT_EQ(Make(DvRequest({part})), "");
    const Played good = Play(m_to.Path("file.mov"));
    std::filesystem::remove(m_to.Path("file.mov"));
    for (int step = 0; step < 60; ++step) {
        const bool isSound = step % 3 == 0;
        std::string bytes = isSound ? sound : video;
        const std::size_t at = static_cast<std::size_t>(step) * bytes.size() / 60;
        if (step % 2 == 0) {
            bytes.resize(at);
        } else {
            bytes.replace(at, 40, Samples(20, 16, static_cast<unsigned>(step)));
        }
        m_from.Write("0001AA.MXF", isSound ? video : bytes);
        m_from.Write("0001AA00.MXF", isSound ? bytes : sound);
        RewrapPart damaged = part;
        damaged.promised = 4;
        if (Make(DvRequest({damaged})).empty()) {
            EXPECT_EQ(m_result.frames, 4U) << step;
            EXPECT_GE(m_result.samples, 3U * 1920) << step;
            std::filesystem::remove(m_to.Path("file.mov"));
        }
    }
    EXPECT_EQ(good.pictures.size(), 4U);
}

} // namespace
} // namespace nqp2::worker
