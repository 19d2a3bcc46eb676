// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/clip_texts.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2Clip.h"

namespace nqp2::clips {

/// Reads what both clip readers read in the same way: everything but the essence files, the codec's
/// class and the fields that only one of them knows. ClipName must be set already.
void ReadSharedFields(const ClipTexts& texts, _tag_P2Clip& clip);

/// Removes every memo whose Offset an earlier one has; the order of the others stays.
void RemoveRepeatedMemos(CArray<_tag_P2Memo>& memos);

} // namespace nqp2::clips
