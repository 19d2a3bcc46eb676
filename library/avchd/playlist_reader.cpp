// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/playlist_reader.h"

#include "avchd/card_folders.h"
#include "avchd/clip_source.h"
#include "avchd/folder_files.h"
#include "avchd/playlist.h"
#include "media/card_layout.h"
#include "media/dates.h"
#include "media/identifier.h"
#include "platform/file_find.h"
#include "platform/file_system.h"
#include "platform/guid_text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nqp2::avchd {
namespace {

/// The first item decides for the whole list. An undefined rate leaves the record's defaults.
void FillRate(const Playlist& playlist, tag_P2EDL& edl) {
    const PlayItem& first = playlist.items.front();
    const FrameRate* rate = RateOf(first.video.rateCode, playlist.Is25p(first));
    if (rate != nullptr) {
        edl.EditUnit = {rate->seconds, rate->frames};
        edl.FrameRate = rate->text;
    }
}

std::int32_t TotalFrames(const Playlist& playlist) {
    std::int32_t total = 0;
    for (const PlayItem& item : playlist.items) {
        total = AddFrames(total, playlist.FramesOf(item));
    }
    return total;
}

/// What the mark of the item's own shot says; a continued recording has another clip.
CString OwnClipId(const Playlist& playlist, const PlayItem& item) {
    if (item.shot == PlayItem::kNoShot || item.continues) {
        return {};
    }
    const std::optional<GlobalClipId>& id =
        playlist.shots[static_cast<std::size_t>(item.shot)].clipId;
    return id ? ClipIdText(*id) : CString();
}

CString DateOf(const std::string& path) {
    platform::FileInfo info;
    const bool known = static_cast<bool>(platform::Files().Stat(path, info));
    return media::FileDateText(known ? std::optional(info.created) : std::nullopt);
}

/// The folder that a card's playlists are listed in; empty when there is none.
CString PlaylistFolder(const CString& root) {
    for (const wchar_t* const above : {kAvchdFolder, kBdmvFolder}) {
        CString folder = root + above + kPlaylistFolder;
        if (FolderExists(folder)) {
            return folder;
        }
    }
    return {};
}

/// The folder that a playlist is looked for in by its name: that of AVCHD whenever there is AVCHD,
/// even without playlists of its own; kept: hosts rely on it.
CString NamedPlaylistFolder(const CString& root) {
    return root + (FolderExists(root + kAvchdFolder) ? kAvchdFolder : kBdmvFolder) +
           kPlaylistFolder;
}

/// Reads playlists of one kind of card; a clip that several items name is read once.
class PlaylistReader {
public:
    PlaylistReader(const CString& root, const ClipFiles& kind)
        : m_kind(kind), m_clips(ClipsFolder(root)) {}

    using Telling = std::function<void(Omission omission, const std::string& why)>;

    /// Fills the record. False when `omit` was told why there is no playlist, and for an empty one.
    bool Read(const std::string& path, const Telling& omit, tag_P2EDL& edl) {
        std::optional<Playlist> playlist;
        const platform::IoStatus status = ReadPlaylistFile(path, playlist);
        if (!status) {
            omit(OmissionOf(status), status.reason);
        } else if (!playlist) {
            omit(Omission::Undecodable, "no sound playlist");
        }
        if (!playlist || playlist->items.empty()) {
            return false;
        }
        edl.Duration = TotalFrames(*playlist);
        edl.StartTimecode = 0;
        FillRate(*playlist, edl);
        edl.Events.Reserve(edl.Events.GetSize() + KeptItems(playlist->items));
        for (const PlayItem& item : playlist->items) {
            AddEvent(*playlist, item, edl);
        }
        return true;
    }

private:
    /// Null when the clip cannot be read.
    const _tag_P2Clip* ClipOf(const PlayItem& item) {
        const auto known = m_known.find(item.Name());
        if (known != m_known.end()) {
            return known->second.get();
        }
        auto clip = std::make_unique<_tag_P2Clip>();
        if (!m_clips.Read(m_kind, platform::TextFromUtf8(item.Name()), *clip)) {
            clip.reset();
        }
        return m_known.emplace(item.Name(), std::move(clip)).first->second.get();
    }

    /// An event is some thirty times its item: room is made for those alone whose clip is there.
    std::int64_t KeptItems(const std::vector<PlayItem>& items) {
        return std::count_if(items.begin(), items.end(),
                             [this](const PlayItem& item) { return ClipOf(item) != nullptr; });
    }

    void AddEvent(const Playlist& playlist, const PlayItem& item, tag_P2EDL& edl) {
        const _tag_P2Clip* clip = ClipOf(item);
        if (clip == nullptr) {
            return;
        }
        tag_P2EDLClipTrackEvent event;
        event.Clip = *clip;
        event.Duration = playlist.FramesOf(item);
        event.ClipName = clip->ClipName;
        event.GlobalClipID =
            clip->GlobalClipID.IsEmpty() ? OwnClipId(playlist, item) : clip->GlobalClipID;
        event.GlobalClipGuid = media::GuidFromIdentifier(event.GlobalClipID);
        event.SourceIn = 0;
        event.SourceOut = event.SourceIn + event.Duration;
        edl.Codec = clip->CodecName;
        edl.Events.Add(std::move(event));
    }

    ClipFiles m_kind;
    ClipSource m_clips;
    /// Null for a clip that cannot be read; a hostile list names thousands of these.
    std::map<std::string, std::unique_ptr<_tag_P2Clip>, std::less<>> m_known;
};

/// Which file is read for one that was listed; nothing when there is none, perhaps with a reason.
using FileOf = std::function<std::optional<std::string>(const platform::FoundFile& file,
                                                        const PlaylistReader::Telling& omit)>;

void AppendPlaylists(PlaylistReader reader, const std::vector<platform::FoundFile>& files,
                     const FileOf& fileOf, const OnOmitted& omitted, CArray<tag_P2EDL>& edls) {
    for (const platform::FoundFile& file : files) {
        TakeAlone(file.path, omitted, [&] {
            const PlaylistReader::Telling omit = [&](Omission omission, const std::string& why) {
                omitted(file.path, media::IsCompanion(file.path) ? Omission::Companion : omission,
                        why);
            };
            tag_P2EDL edl;
            const std::optional<std::string> path = fileOf(file, omit);
            if (path && reader.Read(*path, omit, edl)) {
                edl.Identity = platform::NewGuid();
                edl.Date = DateOf(file.posixPath);
                edl.Name = file.title;
                edls.Add(std::move(edl));
            }
        });
    }
}

std::vector<platform::FoundFile> PlaylistsIn(const CString& folder, const ClipFiles& kind,
                                             platform::IoStatus& status) {
    return platform::FindFiles(folder + L"*" + kind.playlistExtension, status);
}

} // namespace

bool ReadPlaylist(const CString& card, const CString& name, tag_P2EDL& edl) {
    if (card.IsEmpty() || name.IsEmpty()) {
        return false;
    }
    const CString root = media::WithDrive(card);
    const std::optional<std::string> path =
        FolderFiles(NamedPlaylistFolder(root)).Find(name + kAvchdFiles.playlistExtension);
    return path && PlaylistReader(root, kAvchdFiles)
                       .Read(
                           *path, [](auto&&...) {}, edl);
}

bool ScanPlaylists(const CString& card, CArray<tag_P2EDL>& edls) {
    const CString root = media::WithDrive(card);
    const CString folder = PlaylistFolder(root);
    FolderFiles named(NamedPlaylistFolder(root));
    const auto fileOf = [&named](const platform::FoundFile& file, const auto&) {
        return file.isFolder ? std::nullopt
                             : named.Find(file.title + kAvchdFiles.playlistExtension);
    };
    if (folder.IsEmpty()) {
        return false;
    }
    platform::IoStatus status;
    AppendPlaylists(
        {root, kAvchdFiles}, PlaylistsIn(folder, kAvchdFiles, status), fileOf, [](auto&&...) {},
        edls);
    return true;
}

bool ScanAllPlaylists(const CString& card, const OnOmitted& omitted, CArray<tag_P2EDL>& edls) {
    const CString root = media::WithDrive(card);
    const CString folder = card.IsEmpty() ? CString() : PlaylistFolder(root);
    if (folder.IsEmpty()) {
        return false;
    }
    const auto fileOf = [](const platform::FoundFile& file, const auto& omit) {
        const bool readable = file.pathIsSafe && !file.isSpecial && !file.isFolder;
        if (!readable && !file.isFolder) {
            omit(Omission::Unreadable, "it is no regular file, or its name holds a backslash");
        }
        return readable ? std::optional(file.posixPath) : std::nullopt;
    };
    platform::IoStatus status;
    for (const ClipFiles& kind : {kAvchdFiles, kBdmvFiles}) {
        AppendPlaylists({root, kind}, PlaylistsIn(folder, kind, status), fileOf, omitted, edls);
    }
    if (!status) {
        omitted(folder, Omission::FolderUnreadable, status.reason);
    }
    return true;
}

} // namespace nqp2::avchd
