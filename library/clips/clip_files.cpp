// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/clip_files.h"

#include "NQP2ParserU/XmlLimits.h"
#include "platform/case_fold.h"
#include "platform/guard.h"
#include "platform/number_text.h"
#include "platform/unicode.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>
#include <tuple>

namespace nqp2::clips {
namespace {

using platform::FolderEntry;

/// Files up to this size are looked at without a tree.
constexpr std::uint64_t kSmallFile = std::uint64_t{256} << 10U;

std::size_t HashOf(std::string_view text) {
    return std::hash<std::string_view>{}(text);
}

/// The clip whose file it is, or, of a file of another kind, whose it would be by its title.
std::string_view ClipIn(std::string_view foldedName, const media::ClipFileKind& kind) {
    const std::string_view clip = media::ClipNameIn(foldedName, kind);
    return clip.empty() ? foldedName.substr(0, foldedName.rfind('.')) : clip;
}

bool ComesBefore(const NamedFile& left, const NamedFile& right) {
    return std::tie(left.folded, left.isOther, left.name) <
           std::tie(right.folded, right.isOther, right.name);
}

} // namespace

ClipFileIndex::ClipFileIndex(platform::FileTally& tally, const platform::Place& contents) {
    std::vector<Key> keys;
    for (std::uint32_t kind = 0; kind < kKinds; ++kind) {
        const media::ClipFileKind& each = media::kClipFileKinds[kind];
        m_folders[kind] = &tally.Folder(contents.Below(each.folder.Path()));
        const std::vector<FolderEntry>& entries = m_folders[kind]->Entries();
        for (std::uint32_t entry = 0; entry < entries.size(); ++entry) {
            const std::string folded = platform::FoldNameCase(entries[entry].name);
            keys.push_back({HashOf(ClipIn(folded, each)), kind, entry});
        }
    }
    FillBuckets(keys);
}

/// In each the keys stay in their order, kind after kind.
void ClipFileIndex::FillBuckets(const std::vector<Key>& keys) {
    m_buckets.assign(std::bit_ceil(keys.size()) + 1, 0);
    for (const Key& key : keys) {
        ++m_buckets[BucketOf(key.hash) + 1];
    }
    std::partial_sum(m_buckets.begin(), m_buckets.end(), m_buckets.begin());
    std::vector<std::uint32_t> free(m_buckets);
    m_keys.resize(keys.size());
    for (const Key& key : keys) {
        m_keys[free[BucketOf(key.hash)]++] = key;
    }
}

void ClipFileIndex::Find(const NameOfClip& clip) {
    for (std::vector<NamedFile>& found : m_found) {
        found.clear();
    }
    const std::size_t bucket = BucketOf(clip.hash);
    for (std::size_t i = m_buckets[bucket]; i < m_buckets[bucket + 1]; ++i) {
        if (m_keys[i].hash == clip.hash) {
            Match(m_keys[i], clip);
        }
    }
    for (std::vector<NamedFile>& found : m_found) {
        std::sort(found.begin(), found.end(), ComesBefore);
        const auto isAlike = [](const NamedFile& left, const NamedFile& right) {
            return left.folded == right.folded;
        };
        found.erase(std::unique(found.begin(), found.end(), isAlike), found.end());
    }
}

void ClipFileIndex::Match(const Key& key, const NameOfClip& clip) {
    const media::ClipFileKind& kind = media::kClipFileKinds[key.kind];
    const std::string& name = m_folders[key.kind]->Entries()[key.entry].name;
    NamedFile file{platform::FoldNameCase(name), name, key.entry, !name.starts_with(clip.bytes)};
    if (ClipIn(file.folded, kind) != clip.folded) {
        return;
    }
    if (!media::ClipNameIn(file.folded, kind).empty()) {
        const std::string_view suffix = std::string_view(file.folded).substr(clip.folded.size());
        file.role = kind.role;
        file.number = platform::ToInt32(suffix.substr(0, kind.digits));
    }
    m_found[key.kind].push_back(std::move(file));
}

NameOfClip::NameOfClip(const CString& clip)
    : bytes(platform::NameBytesFromText(clip.View())), folded(platform::FoldNameCase(bytes)),
      hash(HashOf(folded)) {}

/// What cannot be read promises nothing.
void P2ClipFiles::TellPromises(platform::TalliedFolder& folder, std::size_t entry) {
    if (m_promises.Tell(folder.Entries()[entry].name, m_promised)) {
        return;
    }
    const platform::MemoryWatch watch;
    if (folder.Read(entry, std::min(kSmallFile, MaxXmlFileSize()), m_bytes)) {
        if (m_fields.Read(m_bytes)) {
            AppendPromises(m_fields.Values(), m_promised);
            return;
        }
        m_document.LoadBytes(m_bytes);
    } else {
        m_document.LoadFile(folder.OnDisk(entry));
    }
    watch.Require();
    if (m_document.LastError().fault == dom::Fault::None) {
        m_promised = PromisesOf(m_document);
    }
    m_document.Clear();
}

/// The folder that a scan has kept. What it has learnt of another card is forgotten.
platform::Place P2ClipFiles::Contents() {
    const platform::Place own = m_tally.Root().Below(media::kContents.BelowDrive());
    const std::optional<platform::Place> kept = m_promises.Contents();
    if (kept && kept->OnDisk() == own.OnDisk()) {
        return *kept;
    }
    m_promises.Clear();
    return own;
}

void P2ClipFiles::Append(const _tag_P2Clip& clip, CArray<ClipFile>& files) {
    if (!media::IsPlainName(clip.ClipName)) {
        return;
    }
    if (!m_index) {
        m_index.emplace(m_tally, Contents());
    }
    m_index->Find(NameOfClip(clip.ClipName));
    m_promised.clear();
    CString metadata;
    for (const NamedFile& each : m_index->FilesOf(media::kMetadataFiles)) {
        if (each.role == ClipFileRole::Metadata && m_promised.empty()) {
            TellPromises(m_index->FolderOf(media::kMetadataFiles), each.entry);
            metadata = m_index->FolderOf(media::kMetadataFiles).PathOf(each.entry);
        }
    }
    m_promised.push_back({&media::kMetadataFiles});
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        AppendKind(clip.ClipName, kind, files);
        if (&kind == &media::kProxyFiles) {
            AppendLostProxy(clip, files);
        } else if (&kind == &media::kVoiceFiles) {
            FindNamedVoices(metadata, files);
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
    const platform::Place& folder = m_index->FolderOf(media::kProxyFiles).Where();
    files.Add({ClipFileRole::Proxy, 0, folder.PathOf(clip.ClipName + extension), 0, 0,
               ClipFileState::Missing});
}

/// A memo may name its recording, which then has any name: read only where one seems to be missing.
void P2ClipFiles::FindNamedVoices(const CString& path, CArray<ClipFile>& files) {
    const auto isLost = [](const ClipFile& file) {
        return file.role == ClipFileRole::Voice && file.state == ClipFileState::Missing;
    };
    auto lost = std::find_if(files.begin(), files.end(), isLost);
    ClipMetadata metadata;
    if (lost == files.end() || path.IsEmpty() ||
        m_metadata.Read(path, metadata).fault != dom::Fault::None) {
        return;
    }
    platform::TalliedFolder& folder = m_index->FolderOf(media::kVoiceFiles);
    for (const MemoMetadata& memo : metadata.memos) {
        const CString name = memo.voicePath.Mid(memo.voicePath.ReverseFind(L'\\') + 1);
        const std::size_t entry = folder.Find(platform::NameBytesFromText(name.View()));
        platform::FileInfo info;
        if (lost != files.end() && entry != platform::TalliedFolder::kNone &&
            !folder.IsTaken(entry) && folder.Take(entry, info)) {
            *lost = {ClipFileRole::Voice,         lost->number, folder.PathOf(entry), info.size, 0,
                     media::StateOf(info.size, 0)};
            lost = std::find_if(lost, files.end(), isLost);
        }
    }
}

void P2ClipFiles::AppendKind(const CString& clip, const media::ClipFileKind& kind,
                             CArray<ClipFile>& files) {
    platform::TalliedFolder& folder = m_index->FolderOf(kind);
    const std::int64_t first = files.GetSize();
    for (const NamedFile& each : m_index->FilesOf(kind)) {
        platform::FileInfo info;
        if (folder.Take(each.entry, info)) {
            files.Add({each.role, each.number, folder.PathOf(each.entry), info.size, 0,
                       media::StateOf(info.size, 0)});
        }
    }
    for (const ClipEssence& promise : m_promised) {
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
        const CString missing = &kind == &media::kVoiceFiles
                                    ? VoiceFileOf(clip, promise.number, promise.voiceFormat)
                                    : media::FileNameOf(kind, clip, promise.number);
        files.Add({kind.role, number, folder.Where().PathOf(missing), 0, promised,
                   ClipFileState::Missing});
    }
    const auto isBefore = [](const ClipFile& left, const ClipFile& right) {
        return left.number < right.number;
    };
    if (!std::is_sorted(files.begin() + first, files.end(), isBefore)) { // which takes no memory
        std::stable_sort(files.begin() + first, files.end(), isBefore);
    }
}

} // namespace nqp2::clips
