// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstddef>
#include <memory>

namespace nqp2 {

/// Reads the metadata of one clip after the other. What lies beside many clips, such as the
/// playlists of an AVCHD card, is read once. Not for several threads at a time.
class NQP2_API ClipMetadataReader {
public:
    /// `root` is the card's, as a scan takes it. Without one an AVCHD clip whose stream is missing
    /// has no file that could tell.
    explicit ClipMetadataReader(const CString& root = {}) noexcept;
    ~ClipMetadataReader();
    ClipMetadataReader(const ClipMetadataReader&) = delete;
    ClipMetadataReader& operator=(const ClipMetadataReader&) = delete;

    /// Of a clip as a scan or LoadClipInfo gave it. On failure `metadata` is empty and `problem`
    /// says why in one sentence.
    MetadataStatus Read(const _tag_P2Clip& clip, ClipMetadata& metadata, CString& problem) noexcept;
    /// About how many bytes that takes which was read last, for who holds that of several clips.
    [[nodiscard]] std::size_t SizeOfLast() const noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state; ///< null when there was no memory for it
};

} // namespace nqp2
