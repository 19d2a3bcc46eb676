// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/worker/rewrap_fixture.h"

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

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

} // namespace
} // namespace nqp2::worker
