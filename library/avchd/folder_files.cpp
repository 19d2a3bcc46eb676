// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "avchd/folder_files.h"

#include "NQP2ParserU/PathText.h"
#include "platform/case_blind.h"
#include "platform/unicode.h"

namespace nqp2::avchd {

std::optional<std::string> FolderFiles::Find(const CString& name) {
    if (!m_index) {
        m_realFolder = platform::FindExisting(PosixPath(m_folder)).value_or(std::string());
        m_index = platform::FolderIndex::Read(m_realFolder);
    }
    const platform::FolderEntry* entry = m_index->Find(platform::NameBytesFromText(name.View()));
    return entry != nullptr && entry->kind == platform::EntryKind::File
               ? std::optional(m_realFolder + entry->name)
               : std::nullopt;
}

} // namespace nqp2::avchd
