// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/FrameRate.h"

#include <cstdint>

class CNQP2Parser;

namespace nqp2 {

/// The kind of the file that a rewrap writes.
enum class RewrapContainer : std::uint32_t { Mov, Mxf, Mkv, Mp4 };

/// How the parts of a recording follow each other.
enum class RewrapJoin : std::uint32_t {
    Frames, ///< each part begins with its own first frame: segments of a P2 take, cuts of a list
    Bytes,  ///< the parts' files are one stream of bytes that a camera has split (AVCHD)
};

/// No file is made of more parts than this.
inline constexpr std::int64_t kMostRewrapParts = 10'000;
/// No file has more chapters than this.
inline constexpr std::int64_t kMostRewrapChapters = 10'000;

/// One part of a recording: its files (interface paths), in which all or some frames count.
struct RewrapPart {
    CString name;               ///< for messages: of the clip or file
    CString video;              ///< the picture's file; of a transport stream all sound too
    CStringArray sounds;        ///< a file for each channel, in order; as many in each part
    std::uint32_t first = 0;    ///< frame at which it is cut in
    std::uint32_t frames = 0;   ///< how many are taken; 0: all that the file has from `first` on
    std::uint32_t promised = 0; ///< frames that the clip's metadata tells of; 0: unknown
};

/// A mark in the file: its frame from the start, and its text.
struct RewrapChapter {
    std::uint32_t frame = 0; ///< counted from 0, the file's first
    CString text;            ///< as shown in the list of chapters
};

/// What one playable file is made of and what is written beside its essence.
struct RewrapRequest {
    CString target; ///< interface path, which nothing may have yet
    RewrapContainer container =
        RewrapContainer::Mov;             ///< refused where the codec has no place in it
    RewrapJoin join = RewrapJoin::Frames; ///< how `parts` follow each other
    bool oneTrack = false;                ///< all channels in one track instead of one each
    CString codec;                        ///< as the clip's metadata says, "" when unknown
    FrameRate rate;                       ///< exactly; 0 / 1 when unknown
    bool interlaced = false;        ///< as the clip says; without a rate the pictures are asked
    std::uint32_t aspectWidth = 0;  ///< of the picture as shown; 0 when unknown
    std::uint32_t aspectHeight = 0; ///< with `aspectWidth`, as in 16 and 9
    CString timecode; ///< of the first frame, at the true rate; ";" before the frames: drop frame
    CString title;    ///< "" writes none
    CString reel;     ///< name of the tape or card, kept beside the timecode; "" writes none
    CString date;     ///< of the recording, ISO 8601; "" writes none
    CArray<RewrapPart> parts;       ///< in the order of the file; at most kMostRewrapParts
    CArray<RewrapChapter> chapters; ///< in the order of their frames; at most kMostRewrapChapters
};

/// How a rewrap ended.
enum class RewrapStatus : std::int32_t {
    Written,   ///< and read back: it holds exactly what the parts hold
    Cancelled, ///< by the progress callback; nothing is left
    Refused,   ///< the worker's GetLastError says why; nothing is left
    NoWorker,  ///< the worker ended or the channel to it failed
};

/// What was written, as it was counted when it was read back.
struct RewrapResult {
    std::uint64_t bytes = 0;       ///< size of the file
    std::uint32_t frames = 0;      ///< pictures in it
    std::uint64_t samples = 0;     ///< of each sound track
    std::uint32_t soundTracks = 0; ///< how many there are; with `oneTrack` at most 1
    CStringArray remarks;          ///< sentences: samples cut at the end, doubts about a part
};

/// Lets the worker make one file of the parts without encoding anything anew, and prove it.
/// Progress goes to the parser's own callback as for a transfer.
NQP2_API RewrapStatus Rewrap(const CNQP2Parser& parser, const RewrapRequest& request,
                             RewrapResult& result) noexcept;

} // namespace nqp2
