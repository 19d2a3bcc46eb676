// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/MarkupMSXML.h"
#include "platform/folder_memory.h"
#include "platform/place.h"

namespace nqp2::clips {

/// A parser's reader of metadata files. It remembers the folders of the card whose clips it was
/// last asked for by name, so that a host that asks for one clip after the other has each folder
/// listed once, not once for each clip. A copy as its base class does not have that memory.
class CardReader final : public CMarkupMSXML {
public:
    /// Begins an operation on the card with that contents folder, an interface path; what is
    /// remembered of another card is dropped. The place is for this operation alone.
    platform::Place Contents(const CString& folder);
    /// Loads a clip's metadata file, an interface path.
    bool LoadClip(const CString& path);

private:
    CString m_contents;
    platform::FolderMemory m_folders;
};

} // namespace nqp2::clips
