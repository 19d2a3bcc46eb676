// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Guid.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstdint>

/// One event of an edit list: a stretch of a source clip on the edit's timeline. All positions and
/// lengths in frames of the edit's own rate.
struct tag_P2EDLClipTrackEvent {
    _tag_P2Clip Clip;              ///< source clip; readers of P2 edit lists leave it fresh
    std::int32_t Offset = 0;       ///< on the edit's timeline
    std::int32_t Duration = 0;     ///< how long it plays
    CString P2SerialNo;            ///< serial number of the card that holds the source
    CString ClipName;              ///< of the source
    CString GlobalClipID;          ///< the source's UMID (SMPTE ST 330) in hexadecimal digits
    GUID GlobalClipGuid;           ///< last 32 digits of GlobalClipID
    std::int32_t SourceOffset = 0; ///< first frame used of the source
    std::int32_t SourceIn = -1;    ///< equal to SourceOffset
    std::int32_t SourceOut = -1;   ///< last frame used, inclusive

    ///@{
    /// As the elements of these names in the edit list say; -1 without them.
    std::int32_t AudioInOffset = -1;
    std::int32_t AudioOutOffset = -1;
    ///@}
    std::int32_t Channels[4] = {0, 1, 2, 3};      ///< source channel for output 1 to 4
    double AudioLevels[4] = {1.0, 1.0, 1.0, 1.0}; ///< gain of output 1 to 4
    CString Note;                                 ///< for a person
};

/// Element of the extended track; nothing reads or writes any.
struct tag_P2EDLExtTrackEvent {};

namespace nqp2 {

/// The extended track, which no reader fills.
struct P2EDLExtTrack {
    ///@{
    /// Kept as they are; nothing reads them.
    std::int32_t First = 0;
    std::int32_t Second = 1;
    ///@}
    CArray<tag_P2EDLExtTrackEvent> Events; ///< empty
};

} // namespace nqp2

/// One edit list.
struct tag_P2EDL {
    /// Seconds as a fraction; the denominator is never 0 in what readers give.
    struct Fraction {
        std::int32_t Numerator = 1;    ///< 1001 of 1001/30000
        std::int32_t Denominator = 25; ///< 30000 of 1001/30000
    };

    CString LeadingText;             ///< no reader fills it
    CString Name;                    ///< the file's name without extension
    std::int32_t Duration = 0;       ///< frames
    Fraction EditUnit;               ///< seconds a frame
    std::int32_t StartTimecode = 0;  ///< frame count
    CString FrameRate;               ///< text as written, "50i"
    CString Codec;                   ///< text as written
    std::int32_t Class50 = 0;        ///< 1: one of four AVC-I codecs with class 50
    std::int32_t ThumbnailFrame = 0; ///< frame that stands for the list
    CString IconPath;                ///< interface path of ICON.BMP beside the file; "" without one
    CString Date;                    ///< local creation time of the file, "Unknow" without one
    GUID Identity;                   ///< new for every record that is loaded
    CArray<tag_P2EDLClipTrackEvent> Events; ///< in the order of the file
    nqp2::P2EDLExtTrack ExtTrack;           ///< not filled
};
