// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/clip_information.h"
#include "avchd/playlist_facts.h"
#include "avchd/stream_head.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/P2Clip.h"

namespace nqp2::avchd {

/// Fills what the files tell of a clip into its record. Name, paths and mask are the caller's. A
/// start date that nothing tells keeps what the record holds. False when nothing tells the
/// timecode, which is 0 then.
bool FillRecord(const ClipInformation& information, const ShotTable::Entry& recorded,
                const StreamHead& stream, _tag_P2Clip& clip);

/// Copies the worker's description of a camera file into a clip record: name, title and date text,
/// identifier, length and start timecode in frames, codec, rate, aspect ratio, raster, the file
/// with the picture (`path` when the worker names none) and those with the sound. Whether numbers
/// are dropped it does not tell: they are where the rate can drop any. The record's date-time value
/// is left alone.
void FillFromBase(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip);

} // namespace nqp2::avchd
