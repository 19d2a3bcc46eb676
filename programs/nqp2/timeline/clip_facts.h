// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/timeline/model.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>
#include <map>

/// What editing systems ask of a clip and its record does not tell in so many words.
namespace nqp2::timeline {

/// The rate of a clip; 25 where it is none that is known, as readers of cards take it.
FrameRate RateOf(const _tag_P2Clip& clip);

Raster RasterOf(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind);

/// Bits of a sample of its sound.
std::int32_t BitsOf(const _tag_P2Clip& clip);

/// The timecode of a clip's first frame as a frame count at the rate at which a file carries its
/// pictures; 0 where none is told.
std::int64_t StartOfPictures(const _tag_P2Clip& clip, const FrameRate& rate);
/// The same as editing systems find it in the file.
std::int64_t StartOfClip(const _tag_P2Clip& clip, const FrameRate& rate, CardKind kind);

/// The timecode of a list's first frame as a frame count.
std::int64_t StartOfList(const tag_P2EDL& edit, const FrameRate& rate, bool dropFrame);

/// Recordings of the report, by the names of their clips in capitals.
std::map<CString, TakePlace> PlacesInTakes(const ScanReport& report);

} // namespace nqp2::timeline
