// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/records.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipFileRecords.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/ScanReport.h"

#include <string>
#include <vector>

namespace nqp2::catalogue {

/// All that is read of a clip, and what of it is kept.
struct ClipFacts {
    const _tag_P2Clip& clip;
    ClipTold told;
    const ClipMetadata& metadata;
    const CArray<ClipFile>& files;
};
CardClip ClipOf(const ClipFacts& facts);

/// The files that the clip lacks. `root` is the card's, as paths on disk begin.
std::vector<GapRecord> FileGapsOf(const ClipFacts& facts, const std::string& root);

/// An identifier as the catalogue compares them; "" for none.
std::string IdentityOf(const CString& globalClipID);
/// That of a clip; "" for one that the catalogue has had to make.
std::string IdentifierOf(const ClipRecord& clip);

} // namespace nqp2::catalogue
