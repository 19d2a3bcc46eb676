// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/playlist_reader.h"

#include "avchd/card_folders.h"
#include "avchd/clip_source.h"
#include "avchd/folder_files.h"
#include "avchd/playlist.h"
#include "media/card_layout.h"
#include "media/file_date.h"
#include "media/identifier.h"
#include "platform/file_find.h"
#include "platform/file_system.h"
#include "platform/guid_text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

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

/// Reads playlists of one card; a clip that several items name is read once.
class PlaylistReader {
public:
    explicit PlaylistReader(const CString& root)
        : m_playlists(root + (FolderExists(root + kAvchdFolder) ? kAvchdFolder : kBdmvFolder) +
                      kPlaylistFolder),
          m_clips(ClipsFolder(root)) {}

    bool Read(const CString& name, tag_P2EDL& edl) {
        const std::optional<Playlist> playlist = Find(name);
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
    std::optional<Playlist> Find(const CString& name) {
        const std::optional<std::string> path = m_playlists.Find(name + kPlaylistExtension);
        return path ? ReadPlaylistFile(*path) : std::nullopt;
    }

    /// Null when the clip cannot be read.
    const _tag_P2Clip* ClipOf(const PlayItem& item) {
        const auto [place, isNew] = m_known.try_emplace(std::string(item.Name()));
        if (isNew) {
            auto clip = std::make_unique<_tag_P2Clip>();
            if (m_clips.Read(kAvchdFiles, platform::TextFromUtf8(place->first), *clip)) {
                place->second = std::move(clip);
            }
        }
        return place->second.get();
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

    FolderFiles m_playlists;
    ClipSource m_clips;
    /// Null for a clip that cannot be read; a hostile list names thousands of these.
    std::map<std::string, std::unique_ptr<_tag_P2Clip>> m_known;
};

} // namespace

bool ReadPlaylist(const CString& card, const CString& name, tag_P2EDL& edl) {
    return !card.IsEmpty() && !name.IsEmpty() &&
           PlaylistReader(media::WithDrive(card)).Read(name, edl);
}

bool ScanPlaylists(const CString& card, CArray<tag_P2EDL>& edls) {
    const CString root = media::WithDrive(card);
    CString folder = root + kAvchdFolder + kPlaylistFolder;
    if (!FolderExists(folder)) {
        folder = root + kBdmvFolder + kPlaylistFolder;
    }
    if (!FolderExists(folder)) {
        return false;
    }
    platform::IoStatus status;
    // Looks in the AVCHD folder whenever that exists, even without playlists of its own: kept, hosts
    // rely on it.
    PlaylistReader reader(root);
    for (const platform::FoundFile& file :
         platform::FindFiles(folder + L"*" + kPlaylistExtension, status)) {
        tag_P2EDL edl;
        if (!file.isFolder && reader.Read(file.title, edl)) {
            edl.Identity = platform::NewGuid();
            edl.Date = DateOf(file.posixPath);
            edl.Name = file.title;
            edls.Add(std::move(edl));
        }
    }
    return true;
}

} // namespace nqp2::avchd
