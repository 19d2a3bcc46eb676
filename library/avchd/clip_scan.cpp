// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/clip_scan.h"

#include "avchd/base_clip.h"
#include "avchd/card_folders.h"
#include "avchd/clip_source.h"
#include "avchd/limits.h"
#include "avchd/stop_watch.h"
#include "media/card_layout.h"
#include "media/dates.h"
#include "platform/file_find.h"
#include "platform/file_system.h"
#include "platform/full_path.h"
#include "platform/guard.h"
#include "platform/read_ahead.h"
#include "platform/unicode.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace nqp2::avchd {
namespace {

using platform::FoundFile;

CString FolderOf(const CString& path) {
    return path.Left(path.ReverseFind(L'\\') + 1);
}

std::optional<std::time_t> TimeOf(const std::optional<platform::FileInfo>& info) {
    return info ? std::optional(info->modified) : std::nullopt;
}

/// A fresh record that holds the file's own time.
void Begin(std::optional<std::time_t> time, _tag_P2Clip& clip) {
    clip.Reset();
    clip.StartDate = media::FileDateText(time);
    clip.ShootStartTime = media::FileMoment(time);
}

class Scan {
public:
    Scan(CString root, const BaseClipRequest& request, const OnOmitted& omitted, ScanResult result)
        : m_root(std::move(root)), m_request(request), m_omitted(omitted), m_clips(result.clips),
          m_splits(result.splits), m_source(ClipsFolder(m_root)) {}

    bool Run() {
        const bool hasSony = FolderExists(m_root + media::kSonyCamera.known.BelowDrive());
        const CString panasonic = PanasonicFolder();
        if (!FolderExists(InformationFolder()) && !hasSony && panasonic.IsEmpty()) {
            return false;
        }
        const StopWatch watch;
        ScanInformation(kAvchdFiles);
        if (hasSony) {
            ScanCameraFiles(m_root + media::kSonyCamera.files.BelowDrive() +
                            media::kSonyCamera.pattern.Text());
        }
        if (!panasonic.IsEmpty()) {
            ScanCameraFiles(panasonic + media::kPanasonicCameras[0].pattern.Text());
        }
        ScanInformation(kBdmvFiles);
        watch.Report(L"LoadAllClip");
        return true;
    }

private:
    [[nodiscard]] CString InformationFolder() const {
        return m_source.Folder() + kInformationFolder;
    }

    [[nodiscard]] CString PanasonicFolder() const {
        const auto* const found =
            std::find_if(media::kPanasonicCameras.begin(), media::kPanasonicCameras.end(),
                         [this](const media::CameraFolder& camera) {
                             return FolderExists(m_root + camera.known.BelowDrive());
                         });
        return found == media::kPanasonicCameras.end() ? CString()
                                                       : m_root + found->files.BelowDrive();
    }

    void OmitUnlessCompanion(const CString& path, Omission omission, const char* why) {
        if (media::IsCompanion(path)) {
            m_omitted(path, Omission::Companion, "a companion file of a Mac");
        } else {
            m_omitted(path, omission, why);
        }
    }

    /// Once for each folder: that of clip information is listed twice.
    void OmitFolder(const CString& folder, const platform::IoStatus& status) {
        if (m_unlisted.insert(folder).second) {
            m_omitted(folder, Omission::FolderUnreadable, status.reason);
        }
    }

    /// Whether the file may be opened; a folder with a file's name is no file that is left out.
    bool IsReadable(const FoundFile& file, const CString& folder) {
        if (file.isFolder) {
            return false;
        }
        if (!file.pathIsSafe) {
            m_omitted(folder, Omission::Unreadable, "a file's name holds a backslash");
        } else if (file.isSpecial) {
            m_omitted(file.path, Omission::Unreadable, "it is no regular file");
        }
        return file.pathIsSafe && !file.isSpecial;
    }

    /// The regular files that a pattern finds.
    std::vector<FoundFile> FilesOf(const CString& pattern) {
        const CString folder = FolderOf(pattern);
        platform::IoStatus status;
        std::vector<FoundFile> files = platform::FindFiles(pattern, status);
        if (!status && status.error != platform::IoError::NotFound) {
            OmitFolder(folder, status);
        }
        const auto isNone = [&](const FoundFile& file) { return !IsReadable(file, folder); };
        files.erase(std::remove_if(files.begin(), files.end(), isNone), files.end());
        return files;
    }

    /// Both files of each clip, in the order in which the scan takes them.
    std::vector<platform::FileRequest> RequestsFor(const ClipFiles& kind,
                                                   const std::vector<FoundFile>& files) {
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

    void ScanInformation(const ClipFiles& kind) {
        const std::vector<FoundFile> files =
            FilesOf(InformationFolder() + L"*" + kind.informationExtension);
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
            if (m_source.StreamOf(kind, file.title)) {
                contents.Next(stream);
            }
            TakeAlone(file.path, m_omitted,
                      [&] { TakeClip(kind, file, information, stream.bytes); });
        }
        FindSplits(kind, first);
    }

    void TakeClip(const ClipFiles& kind, const FoundFile& file, platform::FileContent& information,
                  const std::string& stream) {
        Begin(TimeOf(information.info), m_clip);
        const std::string* content =
            WholeContent(information, file.posixPath, kMaxClipInformationFile);
        if (content == nullptr) {
            m_omitted(file.path, OmissionOf(information.status), information.status.reason);
        } else if (!m_source.Decode(kind, file.title, *content, stream, m_clip)) {
            OmitUnlessCompanion(file.path, Omission::Undecodable, "no sound clip information");
        } else {
            m_clips.Add(m_clip);
        }
    }

    /// The recordings among the clips from `first` on, in the order of their first clips.
    void FindSplits(const ClipFiles& kind, std::int64_t first) {
        if (!m_source.Facts(kind).isWhole) {
            OmitThrown(
                m_source.Folder() + kPlaylistFolder, m_omitted,
                "its playlists take more memory than there is: clips may lack dates and takes");
        }
        std::map<std::string, std::int64_t> places;
        for (std::int64_t i = first; i < m_clips.GetSize(); ++i) {
            places.emplace(platform::NameBytesFromText(m_clips[i].ClipName.View()), i);
        }
        std::map<std::int64_t, SplitRecording> found;
        for (const std::vector<std::string>& chain : m_source.Facts(kind).splits.Chains()) {
            SplitRecording split;
            std::int64_t firstClip = SplitRecording::kMissing;
            for (const std::string& name : chain) {
                const auto place = places.find(name);
                const std::int64_t clip =
                    place == places.end() ? SplitRecording::kMissing : place->second;
                split.segments.push_back({platform::TextFromUtf8(name), clip});
                firstClip = firstClip == SplitRecording::kMissing ? clip : firstClip;
            }
            if (firstClip != SplitRecording::kMissing) {
                found.emplace(firstClip, std::move(split));
            }
        }
        for (auto& [clip, split] : found) {
            m_splits.push_back(std::move(split));
        }
    }

    void ScanCameraFiles(const CString& pattern) {
        for (const FoundFile& file : FilesOf(pattern)) {
            TakeAlone(file.path, m_omitted, [&] { TakeCameraFile(file); });
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
            OmitUnlessCompanion(file.path, Omission::NotDescribed,
                                "the worker gave no description");
            return;
        }
        m_clip.Reset(); // leaves the shooting start, which is the file's time
        FillFromBase(base, path, m_clip);
        m_clips.Add(m_clip);
    }

    CString m_root;
    const BaseClipRequest& m_request;
    const OnOmitted& m_omitted;
    CArray<_tag_P2Clip>& m_clips;
    std::vector<SplitRecording>& m_splits;
    ClipSource m_source;
    std::set<CString> m_unlisted;
    _tag_P2Clip m_clip;
};

} // namespace

Omission OmissionOf(const platform::IoStatus& status) {
    return status.error == platform::IoError::TooLarge ? Omission::TooLarge : Omission::Unreadable;
}

void OmitThrown(const CString& path, const OnOmitted& omitted, const char* why) noexcept {
    platform::Guarded(false, [&] { // telling takes memory too
        omitted(path, Omission::TooLarge, why);
        return true;
    });
}

bool ScanClips(const CString& root, const BaseClipRequest& request, const OnOmitted& omitted,
               ScanResult result) {
    return !root.IsEmpty() && Scan(media::WithDrive(root), request, omitted, result).Run();
}

} // namespace nqp2::avchd
