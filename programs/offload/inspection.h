// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/folder_index.h"
#include "offload/mhl/comparison.h"
#include "offload/mhl/history.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::tool {
class RunProgress;
}

namespace nqp2::offload {

/// A folder, all of whose files were read around the cache, hashed, and held against the history of
/// the folder.
struct Inspection {
    /// Opens the folder and reads its history. Throws tool::Failure when it cannot be opened.
    explicit Inspection(std::string folderToInspect);

    std::string folder;
    std::unique_ptr<platform::Folder> root;
    mhl::History history;
    FolderIndex index;          ///< of what is there, hashed
    OddEntries unreadable;      ///< files that could not be read, or changed meanwhile; why
    mhl::Comparison comparison; ///< nothing counts as missing that could not be looked at
    std::uint64_t unseen = 0;   ///< recorded files and folders of which that is so
    std::uint64_t filesRead = 0;
    std::uint64_t bytesRead = 0;
    double seconds = 0;

    /// Whether every file and folder could be looked at and read.
    [[nodiscard]] bool IsComplete() const;
    /// Whether nothing at all is wrong; where there is no history, new files are not.
    [[nodiscard]] bool IsClean() const;
};

/// Inspects a folder. `wished` are formats that all files are hashed in beside those that the
/// history has for them; when there is neither, it is XXH128. Throws tool::Failure after Ctrl-C.
void Inspect(Inspection& inspection, mhl::FormatSet wished, tool::RunProgress& progress);

} // namespace nqp2::offload
