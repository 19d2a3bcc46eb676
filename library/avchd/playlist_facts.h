// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/playlist.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::avchd {

/// What a card's playlists tell of its shots, by clip name.
class ShotTable {
public:
    struct Entry {
        std::optional<Shot> shot; ///< the earliest in the clip, which has less than 13 hours
        std::uint8_t pulldown = 0;
    };

    /// An item that only continues a recording passes on how that was recorded, nothing else.
    void Add(const Playlist& playlist);
    /// An empty entry for a clip that no playlist names.
    [[nodiscard]] const Entry& Find(std::string_view clipName) const;

private:
    std::map<std::string, Entry, std::less<>> m_entries;
};

/// Which clips are one recording that the camera went on with in a new file, because the one before
/// had become as large as a file may be.
class SplitRecordings {
public:
    /// A clip is followed by the one that the first playlist to tell names; what would close a
    /// circle is left out.
    void Add(const Playlist& playlist);
    /// The names of each recording's clips in their order, two at least.
    [[nodiscard]] std::vector<std::vector<std::string>> Chains() const;

private:
    using Number = std::uint32_t; ///< that the digits of a clip's name make
    static constexpr Number kNone = UINT32_MAX;

    struct Links {
        Number previous = kNone;
        Number next = kNone;
        Number otherEnd = kNone; ///< of its chain; kept at the two ends alone
    };

    Links& LinksOf(Number clip);
    void Connect(Number first, Number second);

    std::map<Number, Links> m_links;
};

} // namespace nqp2::avchd
