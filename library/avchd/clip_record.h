// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/clip_information.h"
#include "avchd/playlist.h"
#include "avchd/stream_head.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

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

/// Fills what the files tell of a clip into its record. Name, paths and mask are the caller's. A
/// start date that nothing tells keeps what the record holds.
void FillRecord(const ClipInformation& information, const ShotTable::Entry& recorded,
                const StreamHead& stream, _tag_P2Clip& clip);

/// The identifier's text: 64 digits in upper case.
CString ClipIdText(const GlobalClipId& id);

} // namespace nqp2::avchd
