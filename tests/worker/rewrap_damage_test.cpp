// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "tests/worker/rewrap_fixture.h"

namespace nqp2::worker {
namespace {

using testing::HasSubstr;

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
