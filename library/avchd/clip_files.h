// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "avchd/card.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipFileRecords.h"
#include "NQP2ParserU/P2Clip.h"
#include "platform/file_tally.h"
#include "platform/place.h"

namespace nqp2::avchd {

/// Which kind of card a clip is of: by its stream, or else by its clip information below a BDMV
/// folder. Null for a camera's file.
const CardKind* KindOf(const _tag_P2Clip& clip, const platform::Place& folder);

/// Appends the files of a clip of the card that the tally is for. Clip information promises the
/// stream and how long it is; a camera's file is the whole clip.
void AppendClipFiles(const _tag_P2Clip& clip, platform::FileTally& tally, CArray<ClipFile>& files);

} // namespace nqp2::avchd
