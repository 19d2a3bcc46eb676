// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/byte_reader.h"
#include "avchd/recorder_data.h"
#include "avchd/video_format.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace nqp2::avchd {

/// What the recorder wrote down about one shot, beside the mark at its start.
struct Shot {
    std::uint32_t item = 0; ///< index of the play item
    std::uint32_t time = 0; ///< position in the item's clip, 45 kHz ticks
    std::uint8_t pulldown = 0;
    std::optional<media::CalendarTime> date;
    std::uint8_t zone = 0; ///< of the date, as recorders write it
    std::optional<RecordedTimecode> timecode;
    std::optional<GlobalClipId> clipId;
};

/// One stretch of a clip.
struct PlayItem {
    static constexpr std::int32_t kNoShot = -1;

    std::array<char, 5> clipName = {}; ///< digits
    std::uint32_t in = 0;              ///< 45 kHz ticks
    std::uint32_t out = 0;             ///< the first tick behind it
    VideoStream video;                 ///< zeros when the item does not tell
    std::int32_t shot = kNoShot;       ///< index of the shot that rules it
    bool joined = false;               ///< connected to the item before it as one recording
    bool continues = false;            ///< joined, and without a mark of its own

    [[nodiscard]] std::string_view Name() const { return {clipName.data(), clipName.size()}; }
};

struct Playlist {
    std::vector<PlayItem> items;
    std::vector<Shot> shots; ///< the first of each item that has any

    /// The rule for 25p, with what the item's shot tells.
    [[nodiscard]] bool Is25p(const PlayItem& item) const;
    /// The item's frames at its own rate; 0 when that is unknown.
    [[nodiscard]] std::int32_t FramesOf(const PlayItem& item) const;
};

/// Decodes a playlist (.MPL, .mpls). Nothing for a file without a sound head and list of items; a
/// damaged table of streams leaves its item without rate, damaged marks and extensions are left
/// out.
std::optional<Playlist> DecodePlaylist(Bytes file);

/// How many items the file says it has, 0 where it does not even tell that: more than kMaxPlayItems
/// are not decoded.
std::size_t CountPlayItems(Bytes file);

} // namespace nqp2::avchd
