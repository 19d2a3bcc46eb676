// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2SegInfo.h"
#include "platform/CString.h"
#include "platform/Export.h"

#include <utility>
#include <vector>

namespace nqp2 {

/// A card's ingest list in the order of its file: clip names with their segments. A clip that is
/// listed twice stands here twice.
using IngestList = std::vector<std::pair<CString, std::vector<tag_P2SegInfo>>>;

/// Reads the list of the card with that root. Returns true when it could be read or the card has
/// none yet (`list` is then empty); false when there is a file that cannot be read.
NQP2_API bool LoadIngestList(const CString& root, IngestList& list);

enum class IngestRemoval { Removed, NotListed, NoList, NotSaved };

/// Takes the first entry of the clip (letter case ignored) out of the card's list.
NQP2_API IngestRemoval RemoveFromIngestList(const CString& root, const CString& clipName);

} // namespace nqp2
