// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2SegInfo.h"
#include "platform/CString.h"

namespace nqp2::ingest {

/// Where a card keeps what its host noted, with its trailing separator.
CString UserDataFolder(const CString& root);

/// Adds the segments of one card to the list in the file. A file that exists but cannot be read
/// is put aside under another name and replaced.
void AddToFile(const CString& path, const IngestClips& clips);

} // namespace nqp2::ingest
