// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "clips/metadata_events.h"
#include "NQP2ParserU/ClipMetadataRecords.h"
#include "NQP2ParserU/CString.h"
#include "platform/folder_memory.h"
#include "xml/dom/document_walk.h"

namespace nqp2::clips {

/// Reads all that the metadata files of P2 clips tell. What it learns of one helps with the next.
class MetadataFileReader {
public:
    /// A clip's file by its interface path. `metadata` counts only when there is no fault.
    dom::ParseError Read(const CString& path, ClipMetadata& metadata);
    /// About what that takes which was read last.
    [[nodiscard]] std::size_t SizeOfLast() const { return m_events.Kept(); }

private:
    void FindMemoFiles(const CString& path, ClipMetadata& metadata);

    dom::DocumentWalker m_walker;
    MetadataEvents m_events;
    platform::FolderMemory m_folders;
};

} // namespace nqp2::clips
