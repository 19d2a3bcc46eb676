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
#include <exception>
#include <functional>
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

/// What a playlist gave.
enum class Outcome { Record, NoItems, NotRead, NoPlaylist };

/// Reads playlists of one card; a clip that several items name is read once.
class PlaylistReader {
public:
    explicit PlaylistReader(const CString& root)
        : m_playlists(root + (FolderExists(root + kAvchdFolder) ? kAvchdFolder : kBdmvFolder) +
                      kPlaylistFolder),
          m_clips(ClipsFolder(root)) {}

    /// `status` is failed when the file could not be read.
    Outcome Read(const CString& name, tag_P2EDL& edl, platform::IoStatus& status) {
        const std::optional<Playlist> playlist = Find(name, status);
        if (!playlist) {
            return status ? Outcome::NoPlaylist : Outcome::NotRead;
        }
        if (playlist->items.empty()) {
            return Outcome::NoItems;
        }
        edl.Duration = TotalFrames(*playlist);
        edl.StartTimecode = 0;
        FillRate(*playlist, edl);
        AddEvents(*playlist, edl);
        return Outcome::Record;
    }

private:
    std::optional<Playlist> Find(const CString& name, platform::IoStatus& status) {
        const std::optional<std::string> path = m_playlists.Find(name + kPlaylistExtension);
        if (!path) {
            status = {platform::IoError::NotFound, "it is not in the folder that is read"};
        }
        return path ? ReadPlaylistFile(*path, status) : std::nullopt;
    }

    /// An event is some thirty times its item: room is made for what is kept alone.
    void AddEvents(const Playlist& playlist, tag_P2EDL& edl) {
        const std::int64_t kept =
            std::count_if(playlist.items.begin(), playlist.items.end(),
                          [this](const PlayItem& item) { return ClipOf(item) != nullptr; });
        edl.Events.Reserve(edl.Events.GetSize() + kept);
        for (const PlayItem& item : playlist.items) {
            AddEvent(playlist, item, edl);
        }
    }

    /// Null when the clip cannot be read.
    const _tag_P2Clip* ClipOf(const PlayItem& item) {
        const auto known = m_known.find(item.Name());
        if (known != m_known.end()) {
            return known->second.get();
        }
        auto clip = std::make_unique<_tag_P2Clip>();
        if (!m_clips.Read(kAvchdFiles, platform::TextFromUtf8(item.Name()), *clip)) {
            clip.reset();
        }
        return m_known.emplace(item.Name(), std::move(clip)).first->second.get();
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
    std::map<std::string, std::unique_ptr<_tag_P2Clip>, std::less<>> m_known;
};

/// Appends the file's record, or tells why there is none.
void TakeFile(const platform::FoundFile& file, PlaylistReader& reader, const OnOmitted& omitted,
              CArray<tag_P2EDL>& edls) {
    tag_P2EDL edl;
    platform::IoStatus status;
    const Outcome outcome = reader.Read(file.title, edl, status);
    if (outcome == Outcome::Record) {
        edl.Identity = platform::NewGuid();
        edl.Date = DateOf(file.posixPath);
        edl.Name = file.title;
        edls.Add(std::move(edl));
    } else if (outcome != Outcome::NoItems && media::IsCompanion(file.path)) {
        omitted(file.path, Omission::Companion, "a companion file of a Mac");
    } else if (outcome == Outcome::NoPlaylist) {
        omitted(file.path, Omission::Undecodable, "no sound playlist");
    } else if (outcome == Outcome::NotRead) {
        const bool tooLarge = status.error == platform::IoError::TooLarge;
        omitted(file.path, tooLarge ? Omission::TooLarge : Omission::Unreadable, status.reason);
    }
}

} // namespace

bool ReadPlaylist(const CString& card, const CString& name, tag_P2EDL& edl) {
    platform::IoStatus status;
    return !card.IsEmpty() && !name.IsEmpty() &&
           PlaylistReader(media::WithDrive(card)).Read(name, edl, status) == Outcome::Record;
}

bool ScanPlaylists(const CString& card, const OnOmitted& omitted, CArray<tag_P2EDL>& edls) {
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
        try {
            if (!file.isFolder) {
                TakeFile(file, reader, omitted, edls);
            }
        } catch (const std::exception& error) { // a list that is beyond memory is one list less
            omitted(file.path, Omission::TooLarge, error.what());
        }
    }
    if (!status && status.error != platform::IoError::NotFound) {
        omitted(folder, Omission::FolderUnreadable, status.reason);
    }
    return true;
}

} // namespace nqp2::avchd
