// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/card.h"
#include "avchd/clip_record.h"
#include "avchd/clip_source.h"
#include "avchd/limits.h"
#include "avchd/omissions.h"
#include "media/card_layout.h"
#include "media/dates.h"
#include "platform/file_system.h"
#include "platform/guard.h"
#include "platform/place.h"
#include "platform/read_ahead.h"
#include "platform/unicode.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace nqp2::avchd {
namespace {

using platform::FoundFile;
using platform::Place;

std::optional<std::time_t> TimeOf(const std::optional<platform::FileInfo>& info) {
    return info ? std::optional(info->modified) : std::nullopt;
}

/// A fresh record that holds the file's own time.
void Begin(std::optional<std::time_t> time, _tag_P2Clip& clip) {
    clip.Reset();
    clip.StartDate = media::FileDateText(time);
    clip.ShootStartTime = media::FileMoment(time);
}

/// The names of clips by their places among the records.
using ClipPlaces = std::map<std::string, std::int64_t>;

class Scan {
public:
    Scan(Place root, const BaseClipRequest& request, CArray<_tag_P2Clip>& clips, ScanReport& report)
        : m_root(std::move(root)), m_request(request), m_clips(clips), m_first(clips.GetSize()),
          m_takes(report.takes), m_untimed(report.untimed), m_omitted(report),
          m_source(ClipsFolder(m_root)) {}

    bool Run() {
        const bool hasSony = m_root.Below(media::kSonyCamera.known.BelowDrive()).Exists();
        const media::CameraFolder* const panasonic = PanasonicFolder();
        if (!m_source.Information().Exists() && !hasSony && panasonic == nullptr) {
            return false;
        }
        const StopWatch watch;
        ScanInformation(kAvchdCard);
        if (hasSony) {
            ScanCameraFiles(media::kSonyCamera);
        }
        if (panasonic != nullptr) {
            ScanCameraFiles(*panasonic);
        }
        ScanInformation(kDisc);
        watch.Report(L"LoadAllClip");
        return true;
    }

private:
    [[nodiscard]] const media::CameraFolder* PanasonicFolder() const {
        const auto* const found =
            std::find_if(media::kPanasonicCameras.begin(), media::kPanasonicCameras.end(),
                         [this](const media::CameraFolder& camera) {
                             return m_root.Below(camera.known.BelowDrive()).Exists();
                         });
        return found == media::kPanasonicCameras.end() ? nullptr : found;
    }

    void OmitUnlessCompanion(const CString& path, SkipReason reason, const char* why) {
        if (media::IsCompanion(path)) {
            m_omitted.Add(path, SkipReason::Companion, "a companion file of a Mac");
        } else {
            m_omitted.Add(path, reason, why);
        }
    }

    /// Whether the file may be opened; a folder with a file's name is no file that is left out.
    bool IsReadable(const FoundFile& file, const CString& folder) {
        if (file.isFolder) {
            return false;
        }
        if (!file.pathIsSafe) {
            m_omitted.Add(folder, SkipReason::Unreadable, "a file's name holds a backslash");
        } else if (file.isSpecial) {
            m_omitted.Add(file.path, SkipReason::Unreadable, "it is no regular file");
        }
        return file.pathIsSafe && !file.isSpecial;
    }

    /// The regular files that a pattern finds. A folder is told of once: that of clip information
    /// is asked twice.
    std::vector<FoundFile> FilesOf(const Place& folder, const CString& pattern) {
        platform::IoStatus status;
        std::vector<FoundFile> files = folder.List(pattern, status);
        const bool isUnread = !status && status.error != platform::IoError::NotFound;
        if (isUnread && m_unread.insert(folder.Written()).second) {
            m_omitted.AddFolder(folder.Written(), status);
        }
        std::erase_if(files,
                      [&](const FoundFile& file) { return !IsReadable(file, folder.Written()); });
        return files;
    }

    /// Both files of each clip, in the order in which the scan takes them.
    std::vector<platform::FileRequest> RequestsFor(const CardKind& kind,
                                                   const std::vector<FoundFile>& files) const {
        std::vector<platform::FileRequest> requests;
        requests.reserve(2 * files.size());
        for (const FoundFile& file : files) {
            requests.push_back(InformationRequest(file.posixPath));
            if (std::optional<std::string> stream = m_source.StreamOf(kind, file.title)) {
                requests.push_back(StreamRequest(std::move(*stream)));
            }
        }
        return requests;
    }

    void ScanInformation(const CardKind& kind) {
        const std::vector<FoundFile> files =
            FilesOf(m_source.Information(), CString(L"*") + kind.files.information.Text());
        if (files.empty()) {
            return;
        }
        const std::int64_t first = m_clips.GetSize();
        platform::ReadAhead contents(RequestsFor(kind, files));
        platform::FileContent information;
        platform::FileContent stream;
        for (const FoundFile& file : files) {
            contents.Next(information);
            stream.bytes.clear();
            const platform::MemoryWatch watch;
            if (m_source.StreamOf(kind, file.title)) {
                contents.Next(stream);
            }
            m_omitted.TakeAlone(file.path, [&] {
                watch.Require(); // a record without what its stream tells would be a wrong one
                TakeClip(kind, file, information, stream.bytes);
            });
        }
        FindTakes(kind, first);
    }

    void TakeClip(const CardKind& kind, const FoundFile& file, platform::FileContent& information,
                  const std::string& stream) {
        Begin(TimeOf(information.info), m_clip);
        bool tellsTimecode = true;
        const std::string* content =
            WholeContent(information, file.posixPath, kMaxClipInformationFile);
        if (content == nullptr) {
            m_omitted.AddUnread(file.path, information.status);
        } else if (!m_source.Decode(kind, file.title, *content, stream, m_clip, tellsTimecode)) {
            OmitUnlessCompanion(file.path, SkipReason::Undecodable, "no sound clip information");
        } else {
            m_clips.Add(m_clip);
            if (!tellsTimecode) {
                m_untimed.Add(m_clips.GetSize() - 1 - m_first);
            }
        }
    }

    /// The recordings among the clips from `first` on that the camera split, in the order of their
    /// first clips.
    void FindTakes(const CardKind& kind, std::int64_t first) {
        if (!m_source.Facts(kind).isWhole) {
            m_omitted.AddThrown(
                m_source.Playlists().Written(),
                "its playlists take more memory than there is: clips may lack dates and takes");
        }
        ClipPlaces places;
        for (std::int64_t i = first; i < m_clips.GetSize(); ++i) {
            places.emplace(platform::NameBytesFromText(m_clips[i].ClipName.View()), i);
        }
        std::map<std::int64_t, Take> takes;
        for (const std::vector<std::string>& chain : m_source.Facts(kind).splits.Chains()) {
            AddTake(chain, places, takes);
        }
        for (auto& [clip, take] : takes) {
            m_takes.Add(std::move(take));
        }
    }

    /// Cards of this kind tell no serial numbers. A chain without any clip of the card is no take.
    void AddTake(const std::vector<std::string>& chain, const ClipPlaces& places,
                 std::map<std::int64_t, Take>& takes) const {
        Take take;
        std::int64_t firstClip = m_clips.GetSize();
        for (const std::string& name : chain) {
            const auto place = places.find(name);
            if (place == places.end()) {
                take.missing.Add({platform::TextFromUtf8(name), L"", L"", take.segments.GetSize()});
                continue;
            }
            if (take.segments.IsEmpty()) {
                firstClip = place->second;
                take.topGlobalClipID =
                    take.missing.IsEmpty() ? m_clips[firstClip].GlobalClipID : CString();
            }
            take.segments.Add(platform::TextFromUtf8(name));
        }
        take.complete = take.missing.IsEmpty();
        if (!take.segments.IsEmpty()) {
            takes.emplace(firstClip, std::move(take));
        }
    }

    void ScanCameraFiles(const media::CameraFolder& camera) {
        for (const FoundFile& file :
             FilesOf(m_root.Below(camera.files.BelowDrive()), camera.pattern.Text())) {
            m_omitted.TakeAlone(file.path, [&] { TakeCameraFile(file); });
        }
    }

    void TakeCameraFile(const FoundFile& file) {
        platform::FileInfo info;
        const bool known = static_cast<bool>(platform::Files().Stat(file.posixPath, info));
        Begin(known ? std::optional(info.modified) : std::nullopt, m_clip);
        NQP2BaseClipInfo base;
        base.clipText1 = file.title;
        base.clipText2 = m_clip.StartDate;
        const CString path = platform::FullPath(file.path);
        if (m_request(path, base) <= 0) {
            OmitUnlessCompanion(file.path, SkipReason::NotDescribed,
                                "the worker gave no description");
            return;
        }
        m_clip.Reset(); // leaves the shooting start, which is the file's time
        FillFromBase(base, path, m_clip);
        m_clips.Add(m_clip);
    }

    Place m_root;
    const BaseClipRequest& m_request;
    CArray<_tag_P2Clip>& m_clips;
    std::int64_t m_first; ///< of the clips
    CArray<Take>& m_takes;
    CArray<std::int64_t>& m_untimed;
    Omissions m_omitted;
    ClipSource m_source;
    std::set<CString> m_unread;
    _tag_P2Clip m_clip;
};

} // namespace

bool ScanClips(const CString& root, const BaseClipRequest& request, CArray<_tag_P2Clip>& clips,
               ScanReport& report) {
    return !root.IsEmpty() && Scan(Place(media::WithDrive(root)), request, clips, report).Run();
}

bool ReadClip(const CString& root, const CString& name, const CardKind& kind, _tag_P2Clip& clip) {
    return !root.IsEmpty() && !name.IsEmpty() &&
           ClipSource(ClipsFolder(Place(media::WithDrive(root)))).Read(kind, name, clip);
}

} // namespace nqp2::avchd
