// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/card.h"
#include "avchd/clip_record.h"
#include "avchd/playlist_facts.h"
#include "avchd/stream_head.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2Clip.h"
#include "platform/place.h"
#include "platform/read_ahead.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nqp2::avchd {

/// The folder of clips below a root: that of AVCHD when it holds clip information, even none at
/// all, else that of a disc.
platform::Place ClipsFolder(const platform::Place& root);

/// A regular file of a folder by its name in any letter case, for the file system. The folder is
/// listed for that, once: other cases and missing names cost no search of their own.
std::optional<std::string> FileIn(const platform::Place& folder, const CString& name);

/// The clips below one BDMV folder. Reads the playlists when they are first asked for, once for all
/// clips of a kind.
class ClipSource {
public:
    explicit ClipSource(const platform::Place& folder)
        : m_information(folder.Below(media::kClipInformation.Path())),
          m_streams(folder.Below(media::kStreams.Path())),
          m_playlists(folder.Below(media::kPlaylists.Path())) {}

    [[nodiscard]] const platform::Place& Information() const { return m_information; }
    [[nodiscard]] const platform::Place& Playlists() const { return m_playlists; }
    /// The clip's stream file for the file system; nothing when the card has none.
    [[nodiscard]] std::optional<std::string> StreamOf(const CardKind& kind,
                                                      const CString& name) const;

    /// Fills the record from a clip information file's content and the beginning of its stream, and
    /// reads more of the stream when that is not enough. False, the record untouched, when the clip
    /// cannot be decoded. `tellsTimecode`: whether the record's timecode is what a file tells.
    bool Decode(const CardKind& kind, const CString& name, const std::string& information,
                const std::string& streamHead, _tag_P2Clip& clip, bool& tellsTimecode);
    /// The same for a clip that is looked for by its name.
    bool Read(const CardKind& kind, const CString& name, _tag_P2Clip& clip);

    /// What the beginning of a clip's stream tells; nothing of one that is missing.
    [[nodiscard]] StreamHead HeadOf(const CardKind& kind, const CString& name,
                                    const VideoStream& video) const;

    /// What the playlists of one kind of card tell; a playlist that cannot be read tells nothing.
    struct PlaylistFacts {
        ShotTable shots;
        SplitRecordings splits;
        bool isWhole = false; ///< not when memory was short for one of them
    };
    const PlaylistFacts& Facts(const CardKind& kind);

    /// Calls `take` with the content of each playlist of a kind that can be read. False when memory
    /// was short for one of them.
    using TakePlaylist = std::function<void(Bytes content)>;
    bool ReadPlaylists(const CardKind& kind, const TakePlaylist& take) const;

private:
    void FillPaths(const CardKind& kind, const CString& name, bool hasStream, std::int32_t channels,
                   _tag_P2Clip& clip) const;

    platform::Place m_information;
    platform::Place m_streams;
    platform::Place m_playlists;
    std::map<std::wstring, PlaylistFacts> m_facts; ///< by the playlists' extension
};

Bytes BytesIn(const std::string& content);

/// What reads a clip's two files.
platform::FileRequest InformationRequest(std::string path);
platform::FileRequest StreamRequest(std::string path);

/// The file's bytes when it was read; one too large to be read ahead is read now.
const std::string* WholeContent(platform::FileContent& file, const std::string& path,
                                std::uint64_t limit);

/// Reads one playlist file and decodes it; nothing in `playlist` when it cannot be read, is none,
/// or has more items than are read, which is TooLarge.
platform::IoStatus ReadPlaylistFile(const std::string& path, std::optional<Playlist>& playlist);

/// Tells the debugger output how long something took.
class StopWatch {
public:
    /// Writes the milliseconds since construction beside the name of what was called.
    void Report(const wchar_t* called) const;

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace nqp2::avchd
