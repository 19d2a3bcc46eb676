// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"

#include <span>
#include <string_view>

namespace nqp2::media {

/// Where a clip's metadata keep what has a member of its own, one value an element.
struct MetadataPath {
    std::string_view below; ///< path below kClipContentPath
    CString& (*member)(ClipMetadata& metadata);
};
std::span<const MetadataPath> MetadataPaths();


} // namespace nqp2::media
