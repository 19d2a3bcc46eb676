// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/value.h"
#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/P2Clip.h"

#include <string>

namespace nqp2::tool {

/// Shows every field of a clip under its own name in declaration order, then what its codec and
/// rate mean (CodeType, VideoStandard). Paths are POSIX paths, absent files "".
void PutClip(ValueSink& sink, const _tag_P2Clip& clip);

/// The same with its card before all else ("Card").
void PutClipOfCard(ValueSink& sink, const std::string& card, const _tag_P2Clip& clip);

/// What a clip's codec and rate mean.
eCodeType CodeTypeOf(const _tag_P2Clip& clip);
eP2_VIDEO_STANDARD StandardOf(const _tag_P2Clip& clip);

/// An enumeration value with its name: {"value", "name"}.
Content CodeTypeRecord(eCodeType type);
Content StandardRecord(eP2_VIDEO_STANDARD standard);

} // namespace nqp2::tool
