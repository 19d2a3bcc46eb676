// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_metadata.h"
#include "clips/clip_promises.h"
#include "clips/clip_texts.h"
#include "media/card_layout.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipFileRecords.h"
#include "NQP2ParserU/P2Clip.h"
#include "platform/file_tally.h"
#include "xml/dom/document.h"
#include "xml/dom/field_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::clips {

/// A clip's name as files are found by it.
struct NameOfClip {
    explicit NameOfClip(const CString& clip);

    std::string bytes;
    std::string folded;
    std::size_t hash; ///< of the folded one
};

/// A file that has a clip's name.
struct NamedFile {
    std::string folded;    ///< its name
    std::string_view name; ///< as it is on the medium
    std::size_t entry;     ///< of its folder
    bool isOther;          ///< than the name as the clip's is written
    ClipFileRole role = ClipFileRole::Other;
    std::int32_t number = 0;
};

/// The folders of a card with the files of all its clips, by the clips' names.
class ClipFileIndex {
public:
    /// Lists each folder below `contents` that is not listed yet. `tally` must outlive this object.
    ClipFileIndex(platform::FileTally& tally, const platform::Place& contents);

    // The kind is one of media::kClipFileKinds.

    [[nodiscard]] platform::TalliedFolder& FolderOf(const media::ClipFileKind& kind) const {
        return *m_folders[IndexOf(kind)];
    }
    /// Looks for all files of a clip, which FilesOf then tells.
    void Find(const NameOfClip& clip);
    /// In the order of their numbers and names. Of names that differ only in letter case, which are
    /// one on a card, there is the exact one or the first.
    [[nodiscard]] const std::vector<NamedFile>& FilesOf(const media::ClipFileKind& kind) const {
        return m_found[IndexOf(kind)];
    }

private:
    static constexpr std::size_t kKinds = media::kClipFileKinds.size();
    struct Key {
        std::size_t hash; ///< of the clip's name
        std::uint32_t kind;
        std::uint32_t entry;
    };

    static std::size_t IndexOf(const media::ClipFileKind& kind) {
        return static_cast<std::size_t>(&kind - media::kClipFileKinds.data());
    }
    [[nodiscard]] std::size_t BucketOf(std::size_t hash) const {
        return hash & (m_buckets.size() - 2);
    }
    void FillBuckets(const std::vector<Key>& keys);
    void Match(const Key& key, const NameOfClip& clip);

    std::array<platform::TalliedFolder*, kKinds> m_folders;
    std::vector<std::uint32_t> m_buckets; ///< where each begins in m_keys, and the end of all
    std::vector<Key> m_keys;
    std::array<std::vector<NamedFile>, kKinds> m_found;
};

/// Tells the files of a P2 card's clips.
class P2ClipFiles {
public:
    /// `tally` must outlive this object.
    explicit P2ClipFiles(platform::FileTally& tally) : m_tally(tally) {}

    void Append(const _tag_P2Clip& clip, CArray<ClipFile>& files);
    /// What is in there is not read again.
    [[nodiscard]] ClipPromises& Promises() { return m_promises; }

private:
    platform::Place Contents();
    void TellPromises(platform::TalliedFolder& folder, std::size_t entry);
    void AppendKind(const CString& clip, const media::ClipFileKind& kind, CArray<ClipFile>& files);
    void FindNamedVoices(const CString& path, CArray<ClipFile>& files);
    void AppendLostProxy(const _tag_P2Clip& clip, CArray<ClipFile>& files);

    platform::FileTally& m_tally;
    ClipPromises m_promises;
    std::optional<ClipFileIndex> m_index; ///< made for the first clip
    std::vector<ClipEssence> m_promised;  ///< by the clip that was asked for last
    dom::FieldReader m_fields{ClipAndFileFields()};
    dom::Document m_document{dom::SelectionRule::Names::Qualified};
    MetadataFileReader m_metadata;
    std::string m_bytes;
};

} // namespace nqp2::clips
