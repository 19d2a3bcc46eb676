// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/P2SegInfo.h"
#include "platform/folder.h"
#include "platform/place.h"

#include <memory>

class CMarkupMSXML;

namespace nqp2::ingest {

/// Where a card keeps what its host noted.
platform::Place UserData(const CString& root);

/// Opens that folder for changes; made when it is missing and `make` says so. NotFound for a card
/// without.
platform::IoStatus OpenUserData(const CString& root, bool make,
                                std::unique_ptr<platform::Folder>& folder);

/// Locks the folder as long as a list is read, changed and saved (of two who do so at once, one
/// would lose what it added) and removes what killed writers left in it. Busy when another
/// process keeps it locked.
platform::IoStatus BeginChange(platform::Folder& folder);

/// Makes an empty list; the cursor is then on the level of its clips.
void MakeList(CMarkupMSXML& list);

/// Adds segments to the clips on whose level the cursor is. Returns whether every clip has its
/// own; a name that XML cannot hold leaves no entry.
bool AddClips(CMarkupMSXML& list, const IngestClips& clips);

/// Writes the list into the folder.
platform::IoStatus Save(CMarkupMSXML& list, platform::Folder& folder, const CString& fileName);

/// Adds the segments of one card to the list of that plain name in its folder. A file that is no
/// sound XML is put aside under another name and replaced. Returns false, with nothing done, when
/// another process keeps the folder locked, and for a link, through which something else would be
/// written.
bool AddToFile(platform::Folder& folder, const platform::Place& place, const CString& fileName,
               const IngestClips& clips);

} // namespace nqp2::ingest
