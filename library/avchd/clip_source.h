// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/card_folders.h"
#include "avchd/clip_record.h"
#include "avchd/folder_files.h"
#include "avchd/playlist_facts.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2Clip.h"
#include "platform/read_ahead.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nqp2::avchd {

/// The clips below one BDMV folder. Lists its folders and reads the playlists when they are first
/// asked for, once for all clips of a kind.
class ClipSource {
public:
    /// An interface path with its trailing separator.
    explicit ClipSource(CString folder)
        : m_folder(std::move(folder)), m_information(m_folder + kInformationFolder),
          m_streams(m_folder + kStreamFolder) {}

    [[nodiscard]] const CString& Folder() const { return m_folder; }
    /// The clip's stream file for the file system; nothing when the card has none.
    std::optional<std::string> StreamOf(const ClipFiles& files, const CString& name);

    /// Fills the record from a clip information file's content and the beginning of its stream, and
    /// reads more of the stream when that is not enough. False, the record untouched, when the clip
    /// cannot be decoded.
    bool Decode(const ClipFiles& files, const CString& name, const std::string& information,
                const std::string& streamHead, _tag_P2Clip& clip);
    /// The same for a clip that is looked for by its name.
    bool Read(const ClipFiles& files, const CString& name, _tag_P2Clip& clip);

    /// What the playlists of one kind of card tell; a playlist that cannot be read tells nothing.
    struct PlaylistFacts {
        ShotTable shots;
        SplitRecordings splits;
        bool isWhole = false; ///< not when memory was short for one of them
    };
    const PlaylistFacts& Facts(const ClipFiles& files);

private:
    StreamHead DecodeStream(const std::optional<std::string>& path, const VideoStream& video,
                            const std::string& begin);
    void FillPaths(const ClipFiles& files, const CString& name, bool hasStream,
                   std::int32_t channels, _tag_P2Clip& clip);

    CString m_folder;
    FolderFiles m_information;
    FolderFiles m_streams;
    std::map<std::wstring_view, PlaylistFacts> m_facts; ///< by the playlists' extension
};

/// What reads a clip's two files.
platform::FileRequest InformationRequest(std::string path);
platform::FileRequest StreamRequest(std::string path);

/// The file's bytes when it was read; one too large to be read ahead is read now.
const std::string* WholeContent(platform::FileContent& file, const std::string& path,
                                std::uint64_t limit);

/// Reads one playlist file and decodes it; nothing in `playlist` when it cannot be read, is none, or
/// has more items than are read, which is TooLarge.
platform::IoStatus ReadPlaylistFile(const std::string& path, std::optional<Playlist>& playlist);

} // namespace nqp2::avchd
