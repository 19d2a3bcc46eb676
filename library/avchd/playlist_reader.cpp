// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card.h"
#include "avchd/clip_source.h"
#include "avchd/omissions.h"
#include "avchd/playlist.h"
#include "media/card_layout.h"
#include "media/dates.h"
#include "media/identifier.h"
#include "platform/file_system.h"
#include "platform/guid_text.h"
#include "platform/place.h"
#include "platform/unicode.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::avchd {
namespace {

using platform::FoundFile;
using platform::Place;

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

/// The folder that a card's playlists are listed in; nothing when there is none.
std::optional<Place> PlaylistFolder(const Place& root) {
    for (const wchar_t* const above : {media::kAvchd.BelowDrive(), media::kDisc.BelowDrive()}) {
        if (Place folder = root.Below(above).Below(media::kPlaylists.Path()); folder.Exists()) {
            return folder;
        }
    }
    return std::nullopt;
}

/// The folder that a playlist is looked for in by its name: that of AVCHD whenever there is AVCHD,
/// even without playlists of its own; kept: hosts rely on it.
Place NamedPlaylistFolder(const Place& root) {
    const Place avchd = root.Below(media::kAvchd.BelowDrive());
    return (avchd.Exists() ? avchd : root.Below(media::kDisc.BelowDrive()))
        .Below(media::kPlaylists.Path());
}

/// Why there is no edit list of a playlist.
struct Refusal {
    SkipReason reason;
    std::string why;
};

/// What becomes of an item whose clip cannot be read.
enum class MissingClips { LeftOut, Kept };

/// Clips of a list that cannot be read, each told once and a few by their names.
class MissingNames {
public:
    void Add(std::string_view name) {
        if (m_names.emplace(name).second && m_names.size() <= kShown) {
            m_text += (m_text.empty() ? "" : ", ") + std::string(name);
        }
    }
    [[nodiscard]] bool AreNone() const { return m_names.empty(); }
    [[nodiscard]] std::string Sentence() const {
        const std::size_t more = m_names.size() - std::min(m_names.size(), kShown);
        return "clips that are missing or cannot be read: " + m_text +
               (more == 0 ? "" : " and " + std::to_string(more) + " more");
    }

private:
    static constexpr std::size_t kShown = 12;

    std::set<std::string, std::less<>> m_names;
    std::string m_text;
};

/// Reads playlists of one kind of card; a clip that several items name is read once.
class PlaylistReader {
public:
    PlaylistReader(const Place& root, const CardKind& kind, MissingClips missing)
        : m_kind(kind), m_keepsMissing(missing == MissingClips::Kept), m_clips(ClipsFolder(root)) {}

    /// Fills the record. False with a reason, or without one for an empty playlist.
    bool Read(const std::string& path, tag_P2EDL& edl, std::optional<Refusal>& refusal) {
        std::optional<Playlist> playlist;
        const platform::IoStatus status = ReadPlaylistFile(path, playlist);
        if (!status) {
            refusal = Refusal{ReasonOf(status), status.reason};
        } else if (!playlist) {
            refusal = Refusal{SkipReason::Undecodable, "no sound playlist"};
        }
        if (!playlist || playlist->items.empty()) {
            return false;
        }
        edl.Duration = TotalFrames(*playlist);
        edl.StartTimecode = 0;
        FillRate(*playlist, edl);
        m_missing = {};
        edl.Events.Reserve(edl.Events.GetSize() + KeptItems(playlist->items));
        for (const PlayItem& item : playlist->items) {
            AddEvent(*playlist, item, edl);
        }
        return true;
    }

    /// Those of the list that was read last; none where they are left out.
    [[nodiscard]] const MissingNames& Missing() const { return m_missing; }

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

    /// An event is some thirty times its item: room is made for those alone that are kept.
    std::int64_t KeptItems(const std::vector<PlayItem>& items) {
        return std::count_if(items.begin(), items.end(), [this](const PlayItem& item) {
            return m_keepsMissing || ClipOf(item) != nullptr;
        });
    }

    void AddEvent(const Playlist& playlist, const PlayItem& item, tag_P2EDL& edl) {
        const _tag_P2Clip* clip = ClipOf(item);
        if (clip == nullptr && !m_keepsMissing) {
            return;
        }
        tag_P2EDLClipTrackEvent event;
        if (clip != nullptr) {
            event.Clip = *clip;
            event.ClipName = clip->ClipName;
            event.GlobalClipID = clip->GlobalClipID;
            edl.Codec = clip->CodecName;
        } else {
            const FrameRate* rate = RateOf(item.video.rateCode, playlist.Is25p(item));
            event.Clip.FrameRate = rate == nullptr ? CString() : CString(rate->text);
            event.ClipName = platform::TextFromUtf8(item.Name());
            m_missing.Add(item.Name());
        }
        event.Duration = playlist.FramesOf(item);
        if (event.GlobalClipID.IsEmpty()) {
            event.GlobalClipID = OwnClipId(playlist, item);
        }
        event.GlobalClipGuid = media::GuidFromIdentifier(event.GlobalClipID);
        event.SourceIn = 0;
        event.SourceOut = event.SourceIn + event.Duration;
        edl.Events.Add(std::move(event));
    }

    CardKind m_kind;
    bool m_keepsMissing;
    ClipSource m_clips;
    /// Null for a clip that cannot be read; a hostile list names thousands of these.
    std::map<std::string, std::unique_ptr<_tag_P2Clip>, std::less<>> m_known;
    MissingNames m_missing;
};

/// Which file is read for one that was listed; nothing when there is none, perhaps with a reason.
using FileOf = std::optional<std::string> (*)(const Place& root, const FoundFile& file,
                                              std::optional<Refusal>& refusal);

/// A playlist of AVCHD is read under its name, perhaps from another folder than the one listed.
std::optional<std::string> FileOfName(const Place& root, const FoundFile& file,
                                      std::optional<Refusal>& /*refusal*/) {
    return file.isFolder
               ? std::nullopt
               : FileIn(NamedPlaylistFolder(root), file.title + kAvchdCard.files.playlist.Text());
}

std::optional<std::string> FileItself(const Place& /*root*/, const FoundFile& file,
                                      std::optional<Refusal>& refusal) {
    const bool isReadable = file.pathIsSafe && !file.isSpecial && !file.isFolder;
    if (!isReadable && !file.isFolder) {
        refusal =
            Refusal{SkipReason::Unreadable, "it is no regular file, or its name holds a backslash"};
    }
    return isReadable ? std::optional(file.posixPath) : std::nullopt;
}

class PlaylistScan {
public:
    PlaylistScan(Place root, Place folder, MissingClips missing, CArray<tag_P2EDL>& edls,
                 ScanReport& report)
        : m_root(std::move(root)), m_folder(std::move(folder)), m_missing(missing), m_edls(edls),
          m_omitted(report) {}

    /// Appends the playlists of one kind.
    void Append(const CardKind& kind, FileOf fileOf) {
        PlaylistReader reader(m_root, kind, m_missing);
        platform::IoStatus status;
        for (const FoundFile& file :
             m_folder.List(CString(L"*") + kind.files.playlist.Text(), status)) {
            m_omitted.TakeAlone(file.path, [&] { Take(file, reader, fileOf); });
        }
    }

    void AppendAll() {
        Append(kAvchdCard, FileItself);
        Append(kDisc, FileItself);
        if (const platform::IoStatus& status = m_folder.Names().Status(); !status) {
            m_omitted.AddFolder(m_folder.Written(), status);
        }
    }

private:
    void Take(const FoundFile& file, PlaylistReader& reader, FileOf fileOf) {
        std::optional<Refusal> refusal;
        const std::optional<std::string> path = fileOf(m_root, file, refusal);
        tag_P2EDL edl;
        if (path && reader.Read(*path, edl, refusal)) {
            edl.Identity = platform::NewGuid();
            edl.Date = DateOf(file.posixPath);
            edl.Name = file.title;
            m_edls.Add(std::move(edl));
            if (!reader.Missing().AreNone()) {
                m_omitted.Add(file.path, SkipReason::MissingClip, reader.Missing().Sentence());
            }
        } else if (refusal) {
            m_omitted.Add(file.path,
                          media::IsCompanion(file.path) ? SkipReason::Companion : refusal->reason,
                          refusal->why);
        }
    }

    Place m_root;
    Place m_folder;
    MissingClips m_missing;
    CArray<tag_P2EDL>& m_edls;
    Omissions m_omitted;
};

} // namespace

bool ReadPlaylist(const CString& root, const CString& name, tag_P2EDL& edl) {
    if (root.IsEmpty() || name.IsEmpty()) {
        return false;
    }
    const Place card(media::WithDrive(root));
    const std::optional<std::string> path =
        FileIn(NamedPlaylistFolder(card), name + kAvchdCard.files.playlist.Text());
    std::optional<Refusal> refusal;
    return path &&
           PlaylistReader(card, kAvchdCard, MissingClips::LeftOut).Read(*path, edl, refusal);
}

bool ScanPlaylists(const CString& root, CArray<tag_P2EDL>& edls) {
    const Place card(media::WithDrive(root));
    const std::optional<Place> folder = PlaylistFolder(card);
    ScanReport report; // not asked for
    if (folder) {
        PlaylistScan(card, *folder, MissingClips::LeftOut, edls, report)
            .Append(kAvchdCard, FileOfName);
    }
    return folder.has_value();
}

bool ScanAllPlaylists(const CString& root, CArray<tag_P2EDL>& edls, ScanReport& report) {
    const Place card(media::WithDrive(root));
    const std::optional<Place> folder = root.IsEmpty() ? std::nullopt : PlaylistFolder(card);
    if (folder) {
        PlaylistScan(card, *folder, MissingClips::Kept, edls, report).AppendAll();
    }
    return folder.has_value();
}

} // namespace nqp2::avchd
