// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/NQP2BaseClipInfo.h"
#include "NQP2ParserU/P2Clip.h"

namespace nqp2::avchd {

/// Copies the worker's description of a camera file into a clip record: name, title and date text,
/// identifier, length and start timecode in frames, codec, rate, aspect ratio, raster, the file with
/// the picture (`path` when the worker names none) and those with the sound. Whether numbers are
/// dropped it does not tell: they are where the rate can drop any. The record's date-time value is
/// left alone.
void FillFromBase(const NQP2BaseClipInfo& base, const CString& path, _tag_P2Clip& clip);

} // namespace nqp2::avchd
