// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as an AVCHD playlist.

#include "avchd/limits.h"
#include "avchd/playlist.h"
#include "avchd/shot_marks.h"
#include "fuzz/fuzz_target.h"

#include <algorithm>

namespace nqp2::fuzz {
namespace {

using avchd::PlayItem;

bool IsDigit(char ch) {
    return ch >= '0' && ch <= '9';
}

} // namespace

void TestInput(Input input) {
    Require(avchd::DecodeMarks(input).size() * 14 <= input.size(), "every mark is in the file");
    Require(avchd::PlaylistName(input).GetLength() <= 255, "a name has one byte for its length");
    const auto playlist = avchd::DecodePlaylist(input);
    if (!playlist) {
        return;
    }
    Require(playlist->items.size() <= avchd::kMaxPlayItems, "the number of items is bounded");
    Require(playlist->items.size() * 34 <= input.size(), "every item stands in the file");
    for (const PlayItem& item : playlist->items) {
        Require(std::all_of(item.Name().begin(), item.Name().end(), IsDigit),
                "a name that becomes a path has digits only");
        Require(item.shot >= PlayItem::kNoShot &&
                    item.shot < static_cast<std::int32_t>(playlist->shots.size()),
                "an item's shot is one of the list");
        Require(playlist->FramesOf(item) >= 0, "no length is negative");
    }
}

} // namespace nqp2::fuzz
