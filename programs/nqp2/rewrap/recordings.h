// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/JoinedTakes.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace nqp2::rewrap {

/// What a camera has recorded from start to stop.
struct Recording {
    std::vector<const _tag_P2Clip*> clips; ///< in their order, at least one
    CArray<MissingSegment> missing;        ///< parts that none of the cards has
};

/// The recordings of scanned cards, which outlive this.
class Recordings {
public:
    /// Throws the failure to report when takes cannot be joined. With `areApart` each clip is one
    /// recording.
    Recordings(const tool::CardScans& scans, bool areApart);

    /// The one that a clip of the cards is a part of.
    [[nodiscard]] Recording Of(const _tag_P2Clip& clip) const;
    /// All, by the names of their first clips card by card. Copies of one clip are one.
    [[nodiscard]] std::vector<Recording> All() const;

private:
    [[nodiscard]] const _tag_P2Clip* ClipOf(const TakeSegment& segment) const;

    const tool::CardScans& m_scans;
    CArray<JoinedTake> m_takes;
    std::unordered_map<const _tag_P2Clip*, std::int64_t> m_takeOf; ///< indices
};

/// What a playlist shows.
struct PlaylistRecordings {
    std::vector<Recording> list;  ///< in its order, each once
    std::vector<std::string> cut; ///< clips of which it shows less than there is
    std::int64_t lostFrames = 0;  ///< of clips that cannot be read
};
PlaylistRecordings RecordingsOf(const tag_P2EDL& playlist, const tool::CardScan& card,
                                const Recordings& recordings);

/// Takes recordings in their order, each once.
class RecordingList {
public:
    explicit RecordingList(const Recordings& recordings) : m_recordings(recordings) {}

    /// Adds that of a clip, unless it is there.
    void AddOf(const _tag_P2Clip& clip);
    std::vector<Recording> Finish() { return std::move(m_list); }

private:
    bool Mark(const _tag_P2Clip& clip);

    const Recordings& m_recordings;
    std::vector<Recording> m_list;
    std::unordered_set<const _tag_P2Clip*> m_done;
    std::set<CString> m_identifiers;
};

} // namespace nqp2::rewrap
