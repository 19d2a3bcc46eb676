// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value.h"
#include "nqp2/clip_order.h"
#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/P2Clip.h"

#include <cstddef>
#include <string>

namespace nqp2::tool {

/// Shows every field of a clip under its own name in declaration order, then what its codec and
/// rate mean (CodeType, VideoStandard). Paths are POSIX paths, absent files "".
void PutClip(ValueSink& sink, const _tag_P2Clip& clip);
/// The same within a record that has more.
void PutClipMembers(ValueSink& sink, const _tag_P2Clip& clip);

/// The same with its card before all else ("Card").
void PutClipOfCard(ValueSink& sink, const std::string& card, const _tag_P2Clip& clip);

/// To be called where each of the clips is shown in its turn, or one of so many: asks for the next
/// (nqp2/fetch.h).
void FetchAhead(const ClipOrder& clips, std::size_t index, std::size_t step = 1);

/// What a clip's codec and rate mean.
eCodeType CodeTypeOf(const _tag_P2Clip& clip);
eP2_VIDEO_STANDARD StandardOf(const _tag_P2Clip& clip);

/// An enumeration value with its name: {"value", "name"}.
Content CodeTypeRecord(eCodeType type);
Content StandardRecord(eP2_VIDEO_STANDARD standard);

} // namespace nqp2::tool
