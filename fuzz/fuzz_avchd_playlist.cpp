// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Any bytes as an AVCHD playlist.

#include "avchd/limits.h"
#include "avchd/playlist.h"
#include "fuzz/measured_input.h"
#include "fuzz/require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

using nqp2::avchd::PlayItem;
using nqp2::fuzz::Require;

bool IsDigit(char ch) {
    return ch >= '0' && ch <= '9';
}

} // namespace

int nqp2::fuzz::TestInput(const std::uint8_t* data, std::size_t size) {
    const auto playlist = nqp2::avchd::DecodePlaylist({data, size});
    if (!playlist) {
        return 0;
    }
    Require(playlist->items.size() <= nqp2::avchd::kMaxPlayItems, "the number of items is bounded");
    Require(playlist->items.size() * 34 <= size, "every item stands in the file");
    Require(playlist->shots.size() * 14 <= size, "every mark stands in the file");
    for (const PlayItem& item : playlist->items) {
        Require(std::all_of(item.Name().begin(), item.Name().end(), IsDigit),
                "a name that becomes a path has digits only");
        Require(item.shot >= PlayItem::kNoShot &&
                    item.shot < static_cast<std::int32_t>(playlist->shots.size()),
                "an item's shot is one of the list");
        Require(playlist->FramesOf(item) >= 0, "no length is negative");
    }
    return 0;
}
