// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/clip_order.h"
#include "nqp2/clip_reading.h"
#include "nqp2/shown_clip.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/JoinedTakes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nqp2::tool {

class Console;
class MediaDescriber;

/// A clip whose files are not all there as its metadata promise them.
struct BrokenClip {
    std::string_view card;
    CString name;
    CArray<ClipFile> files; ///< those that are not
};

/// A clip that tells what cannot be.
struct RemarkedClip {
    std::string_view card;
    CString name;
    std::vector<std::string> remarks; ///< a sentence each
};

/// What came of reading a clip's metadata.
struct ReadMetadata {
    MetadataStatus status = MetadataStatus::NoFile;
    ClipMetadata metadata;
    CString problem;
    std::size_t bytes = 0; ///< about what they take
};

/// What is known of the clips of cards beside their records, and what must be asked for in the
/// order in which they are shown.
class ClipDetails {
public:
    /// The cards and the describer, which is asked for camera files, must outlive it.
    ClipDetails(Console& console, const CardScans& cards, ClipReading wanted,
                MediaDescriber& describer);
    ClipDetails(const ClipDetails&) = delete;
    ClipDetails& operator=(const ClipDetails&) = delete;

    [[nodiscard]] ClipReading Wanted() const { return m_wanted; }
    /// The card of a clip of theirs. By several threads at a time, as the next.
    [[nodiscard]] const CardScan& CardOf(const _tag_P2Clip& clip) const;
    /// A clip with what is known without reading.
    [[nodiscard]] ShownClip Of(const _tag_P2Clip& clip) const;

    /// The files of a clip, to be asked for in the order of the list; false without memory.
    bool ReadFiles(const _tag_P2Clip& clip, CArray<ClipFile>& files) noexcept;
    /// What is shown of a clip's metadata once they were read: those of a camera file are asked for
    /// now, and what could not be read is told. Null where there is nothing.
    const ClipMetadata* ToShow(const _tag_P2Clip& clip, ReadMetadata& read);
    /// Keeps what there is to remark on a clip that was shown.
    void Remark(const _tag_P2Clip& clip, std::vector<std::string>&& remarks);

    /// The clips that are not whole. Those that were not shown are asked for now.
    const std::vector<BrokenClip>& Broken(const ClipOrder& clips);
    /// The files of all cards that are no clip's, once the clips have been asked for.
    CArray<LooseFile> OtherFiles(const ClipOrder& clips);
    /// The clips on whose values there are remarks; those of which no more than the record was
    /// asked for are looked at now.
    const std::vector<RemarkedClip>& Remarked(const ClipOrder& clips);
    /// How many clips have metadata, and cards folders, that could not be read; each was told.
    [[nodiscard]] std::int64_t CountOfUnread() const { return m_unread; }
    [[nodiscard]] const CArray<JoinedTake>& Takes() const { return m_takes; }

private:
    struct KnownCard {
        const CardScan* card;
        std::string folder;
    };
    [[nodiscard]] const KnownCard& KnownCardOf(const _tag_P2Clip& clip) const;
    void IndexTakes();
    void AskAll(const ClipOrder& clips);
    MetadataStatus Describe(const _tag_P2Clip& clip, ClipMetadata& metadata, std::string& problem);

    Console& m_console;
    ClipReading m_wanted;
    MediaDescriber& m_describer;
    std::vector<KnownCard> m_cards;
    std::map<const _tag_P2Clip*, const KnownCard*, std::less<>> m_byFirstClip;
    CArray<JoinedTake> m_takes;
    std::unordered_map<const _tag_P2Clip*, ShownTake> m_places;
    std::vector<BrokenClip> m_broken;
    std::vector<RemarkedClip> m_remarked;
    bool m_isRemarked = false; ///< all clips have been looked at
    bool m_isAsked = false;    ///< for the files of all clips
    std::int64_t m_unread = 0;
};

} // namespace nqp2::tool
