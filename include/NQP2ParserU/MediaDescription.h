// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <cstdint>

class CNQP2Parser;

namespace nqp2 {

/// What became of asking for a description.
enum class DescriptionStatus : std::int32_t {
    Described, ///< the metadata are filled
    Refused,   ///< the worker's GetLastError says why; so it is without a worker proxy
    NoWorker,  ///< the worker ended or the channel to it failed, perhaps for this file
};

/// Lets the worker describe a media file (interface path), as its container tells: tracks, tags,
/// "Container" and "Duration" in seconds. The tags are among `others` ("Tags/title",
/// "Track[2]/Tags/handler_name"), but for those that fill members: the date of making, maker and
/// model; the place is in both. What goes beyond 4,096 tags or a megabyte is left out and `isCut`.
/// Files are foreign: only the worker reads them. Without a description `metadata` is empty.
NQP2_API DescriptionStatus DescribeMedia(const CNQP2Parser& parser, const CString& path,
                                         ClipMetadata& metadata) noexcept;

} // namespace nqp2
