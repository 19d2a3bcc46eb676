// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"
#include "NQP2ParserU/P2SegInfo.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace nqp2 {

/// A card's ingest list in the order of its file: clip names with their segments. A clip that is
/// listed twice is here twice.
using IngestList = std::vector<std::pair<CString, std::vector<tag_P2SegInfo>>>;

/// What became of reading or changing a list.
enum class IngestStatus : std::int32_t {
    Done,       ///< read, or changed and saved
    NotListed,  ///< the clip has no entry
    NoList,     ///< the card has no list
    Unreadable, ///< there is a list, but it cannot be read or is no sound XML
    Foreign,    ///< it is sound XML, but no ingest list
    BadName,    ///< a clip name that XML cannot hold
    Busy,       ///< another process was changing the list for seconds
    NotSaved,   ///< the list could not be written and is as it was
};

/// What became of reading or changing a card's list. The list is changed with `Done` alone.
struct IngestResult {
    IngestStatus status = IngestStatus::Done; ///< Done alone means that all is as asked
    CString path;                             ///< interface path of the list
    CString reason;          ///< why, where there is more to tell than the status does
    std::int32_t line = 0;   ///< of the fault in the list, from 1; 0 when there is none
    std::int32_t column = 0; ///< from 1; 0 when there is none
};

/// Reads the list of the card with that root. Returns true when it could be read or the card has
/// none yet (`list` is then empty); false when there is one that cannot be read, or a file in its
/// place that is no ingest list. `result` tells which, with NoList for a card that has none.
NQP2_API bool LoadIngestList(const CString& root, IngestList& list) noexcept;
/// The same; `result` tells why it is false, and is Done or NoList when it is true.
NQP2_API bool LoadIngestList(const CString& root, IngestList& list, IngestResult& result) noexcept;

/// Adds segments to the card's list, which is made when there is none, and leaves alone what is no
/// list. Takes turns with all others who change the list by way of this library. Never NotListed or
/// NoList.
NQP2_API IngestResult AddToIngestList(const CString& root, const IngestClips& clips);

/// Takes the first entry of the clip (letter case ignored) out of the card's list. Takes turns too.
NQP2_API IngestResult RemoveFromIngestList(const CString& root, const CString& clipName);

} // namespace nqp2
