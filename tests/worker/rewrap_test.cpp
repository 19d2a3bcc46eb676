// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/support/small_medium.h"
#include "tests/worker/rewrap_fixture.h"

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

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

} // namespace
} // namespace nqp2::worker
