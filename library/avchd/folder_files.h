// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/folder_index.h"

#include <optional>
#include <string>
#include <utility>

namespace nqp2::avchd {

/// The files of one folder, looked for by name in any letter case. The folder is listed when it is
/// first asked, once for all names: a name in another case, or none at all, costs no search of its own.
class FolderFiles {
public:
    /// An interface path with its trailing separator.
    explicit FolderFiles(CString folder) : m_folder(std::move(folder)) {}

    /// The file for the file system; nothing when there is no regular file of that name, and for a
    /// name with separators.
    std::optional<std::string> Find(const CString& name);

private:
    CString m_folder;
    std::string m_realFolder;
    std::optional<platform::FolderIndex> m_index;
};

} // namespace nqp2::avchd
