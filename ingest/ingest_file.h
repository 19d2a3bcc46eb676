// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "media/P2SegInfo.h"
#include "platform/CString.h"
#include "platform/folder_lock.h"
#include "platform/io_status.h"

class CMarkupMSXML;

namespace nqp2::ingest {

/// Where a card keeps what its host noted, with its trailing separator.
CString UserDataFolder(const CString& root);

/// Held while a list is read, changed and saved: of two who do so at once, one would lose what it
/// added.
platform::FolderLock LockFolder(const CString& folder);

/// Whether a list stands there. NotFound says that none does, which is more than that none could be
/// seen.
platform::IoStatus FindList(const CString& path);

/// Makes an empty list; the cursor then stands on the level of its clips.
void MakeList(CMarkupMSXML& list);

/// Adds segments to the clips on whose level the cursor stands. Returns whether every clip has its
/// own; a name that XML cannot hold leaves no entry.
bool AddClips(CMarkupMSXML& list, const IngestClips& clips);

/// Adds the segments of one card to the list in the file. A file that exists but cannot be read
/// is put aside under another name and replaced. Returns false, with nothing done, when somebody
/// else keeps the folder locked.
bool AddToFile(const CString& folder, const CString& fileName, const IngestClips& clips);

} // namespace nqp2::ingest
