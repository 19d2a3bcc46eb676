// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "bridge/NQP2BaseClipInfo.h"
#include "media/P2Clip.h"
#include "platform/CString.h"

namespace nqp2::avchd {

/// Copies the worker's description of a camera file into a clip record: name and date text,
/// identifier, size of the video data, length and start timecode in frames, codec, rate, aspect
/// ratio, the file with the picture (`path` when the worker names none), those with the sound, icon
/// and drop-frame flag. The record's date-time value is left alone.
void FillFromBase(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip);

} // namespace nqp2::avchd
