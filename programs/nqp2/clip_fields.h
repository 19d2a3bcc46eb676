// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/value.h"
#include "NQP2ParserU/CodeType.h"
#include "NQP2ParserU/P2Clip.h"

namespace nqp2::tool {

/// Every field of a clip under its own name in declaration order, then what its codec and rate
/// mean (CodeType, VideoStandard). Paths are POSIX paths, absent files "". Memos are converted
/// when they are printed: the clip must outlive the record.
Record ClipRecord(const _tag_P2Clip& clip);

/// What a clip's codec and rate mean.
eCodeType CodeTypeOf(const _tag_P2Clip& clip);
eP2_VIDEO_STANDARD StandardOf(const _tag_P2Clip& clip);

/// An enumeration value with its name: {"value", "name"}.
Record CodeTypeRecord(eCodeType type);
Record StandardRecord(eP2_VIDEO_STANDARD standard);

} // namespace nqp2::tool
