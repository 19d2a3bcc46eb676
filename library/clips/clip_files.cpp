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

std::size_t HashOf(std::string_view text) {
    return std::hash<std::string_view>{}(text);
}

ClipFileState StateOf(std::uint64_t size, std::uint64_t promised) {
    if (size == 0) {
        return ClipFileState::Empty;
    }
    return size < promised ? ClipFileState::Short : ClipFileState::Present;
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

std::vector<KindFolder::Named> KindFolder::FilesOf(const std::string& clip) const {
    const std::string folded = platform::FoldNameCase(clip);
    const std::vector<FolderEntry>& entries = m_folder.Entries();
    using Key = std::tuple<std::string, bool, std::string>; // of those alike, the first is kept
    std::vector<std::pair<Key, std::size_t>> order;
    const std::size_t hash = HashOf(folded);
    for (auto at =
             std::lower_bound(m_byClip.begin(), m_byClip.end(), std::pair(hash, std::size_t{0}));
         at != m_byClip.end() && at->first == hash; ++at) {
        const std::string& name = entries[at->second].name;
        std::string foldedName = platform::FoldNameCase(name);
        if (ClipIn(foldedName) == folded) {
            order.push_back({{foldedName, !name.starts_with(clip), name}, at->second});
        }
    }
    std::sort(order.begin(), order.end());
    std::vector<Named> files;
    const std::string* last = nullptr;
    for (const auto& [key, entry] : order) {
        const std::string& name = std::get<0>(key);
        if (last == nullptr || *last != name) {
            const bool isOfKind = !media::ClipNameIn(std::string_view(name), m_kind).empty();
            files.push_back({entry, isOfKind ? m_kind.role : ClipFileRole::Other,
                             isOfKind ? platform::ToInt32(std::string_view(name).substr(
                                            folded.size(), m_kind.digits))
                                      : 0});
        }
        last = &name;
    }
    return files;
}

KindFolder& P2ClipFiles::FolderOf(const media::ClipFileKind& kind) {
    auto& folder = m_folders[static_cast<std::size_t>(&kind - media::kClipFileKinds.data())];
    if (!folder) {
        const platform::Place contents = m_tally.Root().Below(media::kContents.BelowDrive());
        folder.emplace(m_tally.Folder(contents.Below(kind.folder.Path())), kind);
    }
    return *folder;
}

/// What cannot be read promises nothing.
std::vector<ClipEssence> P2ClipFiles::PromisesOf(const std::string& metadataFile) {
    const platform::MemoryWatch watch;
    if (platform::Files().Read(metadataFile, std::min(kSmallFile, MaxXmlFileSize()), m_bytes)) {
        if (m_fields.Read(m_bytes)) {
            return EssenceOf(m_fields.Values());
        }
        m_document.LoadBytes(m_bytes);
    } else {
        m_document.LoadFile(metadataFile);
    }
    watch.Require();
    std::vector<ClipEssence> essence;
    if (m_document.LastError().fault == dom::Fault::None) {
        essence = EssenceOf(m_document);
    }
    m_document.Clear();
    return essence;
}

void P2ClipFiles::Append(const _tag_P2Clip& clip, CArray<ClipFile>& files) {
    if (!media::IsPlainName(clip.ClipName)) {
        return;
    }
    const KindFolder& metadata = FolderOf(media::kMetadataFiles);
    std::vector<ClipEssence> promises;
    for (const KindFolder::Named& each :
         metadata.FilesOf(platform::NameBytesFromText(clip.ClipName.View()))) {
        if (each.role == ClipFileRole::Metadata && promises.empty()) {
            promises = PromisesOf(metadata.Folder().OnDisk(each.entry));
        }
    }
    promises.push_back({&media::kMetadataFiles});
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        AppendKind(clip, kind, promises, files);
    }
}

void P2ClipFiles::AppendKind(const _tag_P2Clip& clip, const media::ClipFileKind& kind,
                             const std::vector<ClipEssence>& promises, CArray<ClipFile>& files) {
    const KindFolder& folder = FolderOf(kind);
    const std::int64_t first = files.GetSize();
    for (const KindFolder::Named& each :
         folder.FilesOf(platform::NameBytesFromText(clip.ClipName.View()))) {
        platform::FileInfo info;
        if (folder.Folder().Take(each.entry, info)) {
            files.Add({each.role, each.number, folder.Folder().PathOf(each.entry), info.size, 0,
                       StateOf(info.size, 0)});
        }
    }
    for (const ClipEssence& promise : promises) {
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
            found->state = StateOf(found->size, promised);
            continue;
        }
        const CString name = media::FileNameOf(kind, clip.ClipName, promise.number);
        files.Add({kind.role, number, folder.Folder().Where().PathOf(name), 0, promised,
                   ClipFileState::Missing});
    }
    std::stable_sort(
        files.begin() + first, files.end(),
        [](const ClipFile& left, const ClipFile& right) { return left.number < right.number; });
}

} // namespace nqp2::clips
