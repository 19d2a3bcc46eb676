// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_texts.h"
#include "clips/essence_lookup.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2Clip.h"

/// The two ways in which a clip file becomes a record. They share one list of fields and differ in
/// the class-50 test, in the fields that only one of them reads and in the files that they look
/// for: kept, hosts rely on each.
namespace nqp2::clips {

/// For one clip asked for by name: every path is checked, four audio channels.
void ReadNamedClip(const ClipTexts& texts, const EssenceLookup& essence, _tag_P2Clip& clip);

/// For the card scan: knows the long-GOP and Intra families, timecode and drop frame; outside the
/// families the video file is taken for granted and the last audio channel is left out. The record
/// comes with its ClipName, the title of the clip's file, whatever the metadata say.
void ReadScannedClip(const ClipTexts& texts, const EssenceLookup& essence, _tag_P2Clip& clip);

/// Reads what both clip readers read in the same way: everything but the essence files, the codec's
/// class and the fields that only one of them knows. ClipName must be set already.
void ReadSharedFields(const ClipTexts& texts, _tag_P2Clip& clip);

/// Removes every memo whose Offset an earlier one has; the order of the others stays.
void RemoveRepeatedMemos(CArray<_tag_P2Memo>& memos);

} // namespace nqp2::clips
