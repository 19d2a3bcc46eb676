// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_content.h"
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
#include <utility>
#include <vector>

namespace nqp2::clips {

/// A clip's name as files are found by it.
struct NameOfClip {
    explicit NameOfClip(const CString& clip);

    std::string bytes;
    std::string folded;
    std::size_t hash; ///< of the folded one
};

/// A folder with the files of many clips, by the clips' names.
class KindFolder {
public:
    KindFolder(platform::TalliedFolder& folder, const media::ClipFileKind& kind);

    /// A file that has a clip's name.
    struct Named {
        std::size_t entry = 0;
        ClipFileRole role = ClipFileRole::Other;
        std::int32_t number = 0;
    };
    /// Those of a clip, in the order of their numbers and names. Of names that differ only in
    /// letter case, which are one on a card, there is the exact one or the first.
    [[nodiscard]] std::vector<Named> FilesOf(const NameOfClip& clip) const;

    [[nodiscard]] platform::TalliedFolder& Folder() const { return m_folder; }
    [[nodiscard]] const media::ClipFileKind& Kind() const { return m_kind; }

private:
    [[nodiscard]] std::string_view ClipIn(std::string_view foldedName) const;

    platform::TalliedFolder& m_folder;
    const media::ClipFileKind& m_kind;
    std::vector<std::pair<std::size_t, std::size_t>> m_byClip; ///< hash of the name, entry
};

/// What a clip's metadata say that it has.
struct ClipPromises {
    std::vector<ClipEssence> files;
    std::vector<CString> voices; ///< formats of the recordings among them, by their numbers
};

/// Tells the files of a P2 card's clips.
class P2ClipFiles {
public:
    /// `tally` must outlive this object.
    explicit P2ClipFiles(platform::FileTally& tally) : m_tally(tally) {}

    void Append(const _tag_P2Clip& clip, CArray<ClipFile>& files);

private:
    KindFolder& FolderOf(const media::ClipFileKind& kind);
    ClipPromises PromisesOf(platform::TalliedFolder& folder, std::size_t entry);
    void AppendKind(const CString& clip, const NameOfClip& name, const media::ClipFileKind& kind,
                    const ClipPromises& promises, CArray<ClipFile>& files);
    void AppendLostProxy(const _tag_P2Clip& clip, CArray<ClipFile>& files);

    platform::FileTally& m_tally;
    std::array<std::optional<KindFolder>, media::kClipFileKinds.size()> m_folders;
    dom::FieldReader m_fields{EssenceFields()};
    dom::Document m_document{dom::SelectionRule::Names::Qualified};
    std::string m_bytes;
};

} // namespace nqp2::clips
