// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"

#include <cstdint>

namespace nqp2 {

/// Why a file that the scan met is not among its clips, edit lists or playlists, or is there with
/// something missing.
enum class SkipReason : std::int32_t {
    NotWellFormed, ///< the file is no well-formed XML; line and column are set
    DocumentType,  ///< the file carries a DTD, which is refused
    TooLarge,      ///< beyond the limits of size, memory or number of entries for one file
    Unreadable,    ///< cannot be opened or read
    Companion,     ///< "._" file that a Mac leaves beside each copied file: nothing is lost
    IsFolder,      ///< a folder with a clip file's name
    NoClipContent, ///< well-formed, but without P2Main/ClipContent: listed as a clip all the same
    UnsafeName,    ///< its name is none that a card's files can have: these were not looked for
    FolderUnreadable, ///< the folder could not be read to its end
    NoEditList,       ///< well-formed, but its namespace or edit unit is not that of an edit list
    Undecodable,      ///< clip information that is damaged or tells of no video, a damaged playlist
    NotDescribed,     ///< a camera file that the worker did not describe
    MissingClip,      ///< a playlist with items whose clips cannot be read: these are its events
};

/// One file that was left out, or kept with a remark.
struct SkippedFile {
    CString path;                               ///< interface path
    SkipReason reason = SkipReason::Unreadable; ///< what kept it out, or is to be said of it
    CString text;                               ///< one sentence for a person
    std::int32_t line = 0;                      ///< from 1; 0 when there is none
    std::int32_t column = 0;                    ///< from 1; 0 when there is none
};

/// A segment that a take names but the card lacks.
struct MissingSegment {
    CString clipName;     ///< "" when the metadata does not tell
    CString serialNo;     ///< serial number of the card that holds it; "" when not told
    CString globalClipID; ///< identifier of the missing segment; "" when not told

    /// Index of the segment that is there and that it comes before; their number behind the last.
    std::int64_t before = 0;
};

/// A spanned recording: one shot that continues from clip to clip, perhaps over several cards, or
/// that a camera split because a file had become too large.
struct Take {
    CString topGlobalClipID;        ///< identifier of the first segment; "" when it has none
    CStringArray segments;          ///< names of the clips that are there, in shot order
    bool complete = false;          ///< true when the chain runs from first to last segment
    CArray<MissingSegment> missing; ///< in shot order
};

/// What a clip's files tell of its times and its record does not hold. Zones are minutes before
/// UTC.
struct ClipTold {
    /// The date has no zone, or there is no date.
    static constexpr std::int16_t kNoZone = INT16_MIN;
    std::int16_t startZone = kNoZone; ///< of StartDate
    std::int16_t endZone = kNoZone;   ///< of EndDate
    bool startDate = true;            ///< false: StartDate is the time of a file
    bool startTimecode = true;        ///< false: StartTimecode is 0 for want of any
};

/// What an event of an edit list says and its record does not.
struct EventDoubt {
    CString list;           ///< the list's name
    std::int64_t event = 0; ///< from 0, in the order of the file
    CString text;           ///< the element as it stands there: AudioLevel "loud"
};

class ClipFileReader;

/// What a scan left out and how its clips hang together. Filled beside the fixed results.
struct ScanReport {
    CArray<SkippedFile> skipped; ///< in the order in which the scan met them
    CArray<Take> takes;          ///< of the clips that were found
    CArray<ClipTold> told;       ///< of the clips, in the order in which they came
    CArray<EventDoubt> doubts;   ///< of the edit lists that were read

    /// Interface paths of the P2 card's folders in which each file that a record names was found,
    /// under that very name: RealPaths need not read them.
    CStringArray exactFolders;

    /// When set before the scan of a P2 card by a parser, and made for the same card: it keeps what
    /// the clips' metadata promise, and does not read them once more.
    ClipFileReader* files = nullptr;
    /// Why the card, the clip or the edit list could not be read or written, in one sentence for a
    /// person: set by a call that fails, left alone by one that does not.
    CString failure;
};

} // namespace nqp2
