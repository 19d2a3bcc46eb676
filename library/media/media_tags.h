// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/ClipMetadataRecords.h"

/// What the tags of media files mean, whatever their container.
namespace nqp2::media {

/// Stands in front of a tag's name in the path of its text.
inline constexpr const wchar_t* kTagsPath = L"Tags/";

/// Fills the members that tags among `others` tell of; these tags are then no longer there, but for
/// the place's, which says more. Of several the file's own counts before those of its tracks.
void TakeMembersFromTags(ClipMetadata& metadata);

} // namespace nqp2::media
