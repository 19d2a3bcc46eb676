// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/clip_table.h"
#include "nqp2/media_describer.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/ClipMetadata.h"
#include "NQP2ParserU/JoinedTakes.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/P2SegInfo.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a page tells of cards, and the page.
namespace nqp2::report {

/// A clip with all that is shown of it.
struct ClipContents {
    const _tag_P2Clip* clip = nullptr;
    ClipTold told;
    std::string start; ///< ISO 8601 with its zone, "" where it is not told
    ClipMetadata metadata;
    std::string unread;               ///< why the metadata could not be read
    std::vector<std::string> remarks; ///< on what the metadata tell
    bool isTakeWhole = true;          ///< that of which it is a segment
    CArray<ClipFile> lacking;         ///< files that are missing, empty or short
    std::vector<tag_P2SegInfo> taken; ///< what was taken in: stretches apart from each other
    bool isListed = false;            ///< whether the list of what was taken in names it
};

/// An edit list or playlist.
struct EditContents {
    tag_P2EDL edit;
    bool isPlaylist = false;
};

/// A card with all that is shown of it.
struct CardContents {
    const tool::CardScan* scan = nullptr;
    std::vector<ClipContents> clips; ///< by their names
    std::vector<EditContents> edits;
    CArray<SkippedFile> skipped;      ///< of the scan and of the edit lists
    std::vector<std::string> remarks; ///< what else could not be read
    std::uint64_t bytes = 0;          ///< of all files of the clips
    std::uint64_t freeBytes = 0;
    std::uint64_t volumeBytes = 0; ///< 0 when the volume does not tell
};

/// Reads all but the pictures, card by card. The clips are the scans', which must outlive it, in
/// the order in which they are shown.
/// `describer` is asked for what only the worker can read.
std::vector<CardContents> ReadContents(const tool::CardScans& scans, const tool::ClipOrder& clips,
                                       tool::MediaDescriber& describer);

/// Notes at each clip whether its take, if it is of one, is complete.
void MarkTakes(const CArray<JoinedTake>& takes, std::vector<CardContents>& cards);

/// Whether picture, sound and metadata are all there, and the metadata can be read.
bool IsWhole(const ClipContents& clip);
/// Frames of the clip that were taken in.
std::int64_t FramesTaken(const ClipContents& clip);

} // namespace nqp2::report
