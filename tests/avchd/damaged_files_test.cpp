// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_information.h"
#include "avchd/playlist.h"
#include "avchd/stream_head.h"
#include "tests/avchd/avchd_bytes.h"

#include <gtest/gtest.h>

#include <functional>

namespace nqp2::avchd {
namespace {

/// Decodes bytes and checks what it promises of any result. Returns whether there was one.
using DecodeAny = std::function<bool(Bytes)>;

bool AnyPlaylist(Bytes bytes) {
    const auto playlist = DecodePlaylist(bytes);
    if (!playlist) {
        return false;
    }
    for (const PlayItem& item : playlist->items) {
        EXPECT_EQ(item.Name().find_first_not_of("0123456789"), std::string_view::npos);
        EXPECT_LT(item.shot, static_cast<std::int32_t>(playlist->shots.size()));
        EXPECT_GE(playlist->FramesOf(item), 0);
    }
    return true;
}

bool AnyClip(Bytes bytes) {
    const auto clip = DecodeClipInformation(bytes);
    EXPECT_TRUE(!clip || (!clip->stretches.empty() && IsVideoCoding(clip->video.codingType)));
    return clip.has_value();
}

bool AnyStream(Bytes bytes) {
    const StreamHead head = DecodeStreamHead(bytes, 0x1011);
    EXPECT_TRUE(!head.parameters || (head.parameters->pixels > 0 && head.parameters->lines > 0));
    return head.complete;
}

struct DamageCase {
    const char* name;
    DecodeAny decode;
    std::string sound;
    std::size_t needed; ///< bytes without which there is no result
};

std::vector<DamageCase> Cases() {
    test::PlaylistSpec playlist;
    playlist.items = {test::ItemSpec(), test::ItemSpec{"00001", 0, 900, 6, 5, 6, 2}};
    playlist.marks = {test::MarkSpec(), test::MarkSpec{1}};
    playlist.shotIds = {test::ClipIdBytes(), test::ClipIdBytes()};
    test::PlaylistSpec bare = playlist;
    bare.marks.clear();
    bare.hasExtension = false;
    test::ClipSpec clip;
    clip.clipId = test::ClipIdBytes();
    test::SetSpec set;
    set.scaled = true;
    return {
        {"playlist", AnyPlaylist, test::PlaylistBytes(playlist),
         test::PlaylistBytes(bare).size() - 6},
        {"clip information", AnyClip, test::ClipBytes(clip),
         test::ClipBytes(test::ClipSpec()).size()},
        {"stream", AnyStream, test::StreamBytes(set, test::DatePacks("\x10\x01\x02\x03")), 192}};
}

/// Bytes in memory of their own, so that a read beyond them is noticed.
bool DecodeAlone(const DamageCase& each, std::string_view bytes) {
    const std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    return each.decode(copy);
}

TEST(DamagedFilesTest, CutOffAtEveryByte) {
    for (const DamageCase& each : Cases()) {
        EXPECT_TRUE(DecodeAlone(each, each.sound)) << each.name;
        for (std::size_t size = 0; size < each.sound.size(); ++size) {
            const bool decoded = DecodeAlone(each, std::string_view(each.sound).substr(0, size));
            EXPECT_TRUE(!decoded || size >= each.needed) << each.name << " cut at " << size;
        }
    }
}

/// Wherever a count or length stands: it is nothing, one and the largest number once.
TEST(DamagedFilesTest, EveryNumberAtItsEnds) {
    for (const DamageCase& each : Cases()) {
        for (std::size_t at = 0; at < each.sound.size(); ++at) {
            for (const std::size_t width : {1U, 2U, 4U}) {
                if (at + width > each.sound.size()) {
                    continue;
                }
                for (const std::uint64_t number :
                     {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}}) {
                    std::string damaged = each.sound;
                    damaged.replace(at, width, test::Be(number, static_cast<int>(width)));
                    DecodeAlone(each, damaged);
                }
            }
        }
    }
}

} // namespace
} // namespace nqp2::avchd
