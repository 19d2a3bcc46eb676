// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "NQP2ParserU/Export.h"

#include <memory>
#include <string>

namespace nqp2 {

/// Turns interface paths into the POSIX paths under which their files really stand. Records name
/// files as the card's metadata does; a copy on another file system may spell them in other
/// letters. Reads each folder once, so that the answers stay cheap for a whole card. One thread at
/// a time; a copy is for another thread, and has the folders that any of them has read.
class NQP2_API RealPaths {
public:
    RealPaths();
    ~RealPaths();
    /// For another thread; both share the folders that either has read.
    RealPaths(const RealPaths& other);
    RealPaths& operator=(const RealPaths&) = delete;

    /// The file's real path; PosixPath's answer when there is no such file in any spelling.
    std::string Find(const CString& path);
    /// Reads the folder that the file is in: worth its time before many of its files are asked for.
    void ReadFolderOf(const CString& path);
    /// The same without reading it: its files are under the very names by which they are asked for,
    /// as ScanReport::exactFolders tells. `folder` has a separator at its end.
    void TakeAsWritten(const CString& folder);

private:
    struct Shared;
    struct Cache;
    std::unique_ptr<Cache> m_cache;
};

} // namespace nqp2
