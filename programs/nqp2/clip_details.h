// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/clip_order.h"
#include "nqp2/clip_reading.h"
#include "nqp2/metadata_ahead.h"
#include "nqp2/shown_clip.h"
#include "NQP2ParserU/JoinedTakes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
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

/// Reads what is wanted of each clip beside its record, when it is shown or shortly before: no more
/// than that of a few clips is held.
class ClipDetails {
public:
    /// The cards and the describer, which is asked for camera files, must outlive it.
    ClipDetails(Console& console, const CardScans& cards, ClipReading wanted,
                MediaDescriber& describer);
    ~ClipDetails();
    ClipDetails(const ClipDetails&) = delete;
    ClipDetails& operator=(const ClipDetails&) = delete;

    /// The clips will be shown in that order.
    void Expect(const ClipOrder& clips);
    /// One of the cards' clips with what is known of it, which holds until the next call.
    ShownClip Of(const _tag_P2Clip& clip);

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
    struct Reader;
    Reader& ReaderOf(const _tag_P2Clip& clip);
    void AskAll(const ClipOrder& clips);
    const CArray<ClipFile>& Files(Reader& reader, const _tag_P2Clip& clip);
    std::size_t ReadMetadataOf(const _tag_P2Clip& clip, ReadMetadata& read) noexcept;
    MetadataStatus Describe(const _tag_P2Clip& clip, ClipMetadata& metadata, std::string& problem);
    const ClipMetadata* Metadata(const _tag_P2Clip& clip);
    void IndexTakes();

    Console& m_console;
    ClipReading m_wanted;
    MediaDescriber& m_describer;
    std::vector<std::unique_ptr<Reader>> m_readers; ///< one a card
    std::map<const _tag_P2Clip*, Reader*, std::less<>> m_byFirstClip;
    CArray<JoinedTake> m_takes;
    std::unordered_map<const _tag_P2Clip*, ShownTake> m_places;
    std::vector<BrokenClip> m_broken;
    std::vector<RemarkedClip> m_remarked;
    std::vector<std::string> m_remarks; ///< on the clip that was asked for last
    bool m_isRemarked = false;          ///< all clips have been looked at
    bool m_isAsked = false;             ///< for the files of all clips
    std::int64_t m_unread = 0;
    MetadataAhead m_ahead; ///< last: it uses the readers
};

} // namespace nqp2::tool
