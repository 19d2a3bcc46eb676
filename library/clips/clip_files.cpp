// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_files.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_fold.h"
#include "platform/guard.h"
#include "platform/number_text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace nqp2::clips {
namespace {

using platform::FolderEntry;

/// Files up to this size are looked at without a tree.
constexpr std::uint64_t kSmallFile = std::uint64_t{256} << 10U;

constexpr std::size_t kMostVoices = 100;

std::size_t HashOf(std::string_view text) {
    return std::hash<std::string_view>{}(text);
}

template <class Metadata>
ClipPromises PromisesIn(const Metadata& metadata) {
    ClipPromises promises = {EssenceOf(metadata), VoicesOf(metadata)};
    if (TellsIcon(metadata)) {
        promises.files.push_back({&media::kIconFiles});
    }
    // No more than file names have numbers for.
    promises.voices.resize(std::min(promises.voices.size(), kMostVoices));
    for (std::size_t i = 0; i < promises.voices.size(); ++i) {
        promises.files.push_back({&media::kVoiceFiles, i, 0});
    }
    return promises;
}

} // namespace

KindFolder::KindFolder(platform::TalliedFolder& folder, const media::ClipFileKind& kind)
    : m_folder(folder), m_kind(kind) {
    const std::vector<FolderEntry>& entries = folder.Entries();
    m_byClip.reserve(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        m_byClip.emplace_back(HashOf(ClipIn(platform::FoldNameCase(entries[i].name))), i);
    }
    std::sort(m_byClip.begin(), m_byClip.end());
}

/// The clip whose file it is, or, of a file of another kind, whose it would be by its title.
std::string_view KindFolder::ClipIn(std::string_view foldedName) const {
    const std::string_view clip = media::ClipNameIn(foldedName, m_kind);
    return clip.empty() ? foldedName.substr(0, foldedName.rfind('.')) : clip;
}

std::vector<KindFolder::Named> KindFolder::FilesOf(const NameOfClip& clip) const {
    struct Candidate {
        std::string folded;
        bool isOther; ///< than the name as the clip's is written
        std::size_t entry;
    };
    const std::vector<FolderEntry>& entries = m_folder.Entries();
    std::vector<Candidate> candidates;
    for (auto at = std::lower_bound(m_byClip.begin(), m_byClip.end(),
                                    std::pair(clip.hash, std::size_t{0}));
         at != m_byClip.end() && at->first == clip.hash; ++at) {
        const std::string& name = entries[at->second].name;
        std::string folded = platform::FoldNameCase(name);
        if (ClipIn(folded) == clip.folded) {
            candidates.push_back({std::move(folded), !name.starts_with(clip.bytes), at->second});
        }
    }
    std::sort(candidates.begin(), candidates.end(),
              [&](const Candidate& left, const Candidate& right) {
                  return std::tie(left.folded, left.isOther, entries[left.entry].name) <
                         std::tie(right.folded, right.isOther, entries[right.entry].name);
              });
    const auto isAlike = [](const Candidate& left, const Candidate& right) {
        return left.folded == right.folded;
    };
    candidates.erase(std::unique(candidates.begin(), candidates.end(), isAlike), candidates.end());
    std::vector<Named> files;
    for (const Candidate& each : candidates) {
        const std::string_view name = each.folded;
        const bool isOfKind = !media::ClipNameIn(name, m_kind).empty();
        const std::string_view number = name.substr(clip.folded.size(), m_kind.digits);
        files.push_back({each.entry, isOfKind ? m_kind.role : ClipFileRole::Other,
                         isOfKind ? platform::ToInt32(number) : 0});
    }
    return files;
}

NameOfClip::NameOfClip(const CString& clip)
    : bytes(platform::NameBytesFromText(clip.View())), folded(platform::FoldNameCase(bytes)),
      hash(HashOf(folded)) {}

KindFolder& P2ClipFiles::FolderOf(const media::ClipFileKind& kind) {
    auto& folder = m_folders[static_cast<std::size_t>(&kind - media::kClipFileKinds.data())];
    if (!folder) {
        const platform::Place contents = m_tally.Root().Below(media::kContents.BelowDrive());
        folder.emplace(m_tally.Folder(contents.Below(kind.folder.Path())), kind);
    }
    return *folder;
}

/// What cannot be read promises nothing.
ClipPromises P2ClipFiles::PromisesOf(platform::TalliedFolder& folder, std::size_t entry) {
    const platform::MemoryWatch watch;
    if (folder.Read(entry, std::min(kSmallFile, MaxXmlFileSize()), m_bytes)) {
        if (m_fields.Read(m_bytes)) {
            return PromisesIn(m_fields.Values());
        }
        m_document.LoadBytes(m_bytes);
    } else {
        m_document.LoadFile(folder.OnDisk(entry));
    }
    watch.Require();
    ClipPromises promises;
    if (m_document.LastError().fault == dom::Fault::None) {
        promises = PromisesIn(m_document);
    }
    m_document.Clear();
    return promises;
}

void P2ClipFiles::Append(const _tag_P2Clip& clip, CArray<ClipFile>& files) {
    if (!media::IsPlainName(clip.ClipName)) {
        return;
    }
    const NameOfClip name(clip.ClipName);
    const KindFolder& metadata = FolderOf(media::kMetadataFiles);
    ClipPromises promises;
    for (const KindFolder::Named& each : metadata.FilesOf(name)) {
        if (each.role == ClipFileRole::Metadata && promises.files.empty()) {
            promises = PromisesOf(metadata.Folder(), each.entry);
        }
    }
    promises.files.push_back({&media::kMetadataFiles});
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        AppendKind(clip.ClipName, name, kind, promises, files);
        if (&kind == &media::kProxyFiles) {
            AppendLostProxy(clip, files);
        }
    }
}

/// One that the metadata describe and the medium has not.
void P2ClipFiles::AppendLostProxy(const _tag_P2Clip& clip, CArray<ClipFile>& files) {
    const CString& extension = clip.Proxy.ProxyExt;
    const bool isThere = std::any_of(files.begin(), files.end(), [&](const ClipFile& file) {
        return file.role == ClipFileRole::Proxy &&
               file.path.Right(extension.GetLength()).CompareNoCase(extension) == 0;
    });
    if (clip.Proxy.ProxyFormat == 0 || isThere) {
        return;
    }
    const platform::Place& folder = FolderOf(media::kProxyFiles).Folder().Where();
    files.Add({ClipFileRole::Proxy, 0, folder.PathOf(clip.ClipName + extension), 0, 0,
               ClipFileState::Missing});
}

void P2ClipFiles::AppendKind(const CString& clip, const NameOfClip& name,
                             const media::ClipFileKind& kind, const ClipPromises& promises,
                             CArray<ClipFile>& files) {
    const KindFolder& folder = FolderOf(kind);
    const std::int64_t first = files.GetSize();
    for (const KindFolder::Named& each : folder.FilesOf(name)) {
        platform::FileInfo info;
        if (folder.Folder().Take(each.entry, info)) {
            files.Add({each.role, each.number, folder.Folder().PathOf(each.entry), info.size, 0,
                       media::StateOf(info.size, 0)});
        }
    }
    for (const ClipEssence& promise : promises.files) {
        if (promise.kind != &kind) {
            continue;
        }
        const auto number = static_cast<std::int32_t>(promise.number);
        const std::uint64_t promised = promise.size > 1 ? promise.size : 0;
        const auto found =
            std::find_if(files.begin() + first, files.end(), [&](const ClipFile& each) {
                return each.role == kind.role && each.number == number;
            });
        if (found != files.end()) {
            found->promisedSize = promised;
            found->state = media::StateOf(found->size, promised);
            continue;
        }
        const CString missing =
            &kind == &media::kVoiceFiles
                ? VoiceFileOf(clip, promise.number, promises.voices[promise.number])
                : media::FileNameOf(kind, clip, promise.number);
        files.Add({kind.role, number, folder.Folder().Where().PathOf(missing), 0, promised,
                   ClipFileState::Missing});
    }
    std::stable_sort(
        files.begin() + first, files.end(),
        [](const ClipFile& left, const ClipFile& right) { return left.number < right.number; });
}

} // namespace nqp2::clips
