// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/history.h"

#include <vector>

namespace nqp2::mhl {

/// A file, or a folder without files, that is known under another path.
struct Renamed {
    NodeId now;    ///< in the tree of what is there
    NodeId before; ///< in History::Expected
};

/// What is there against what a history expects. Numbers are those of the tree of what is there,
/// but for what is missing.
struct Comparison {
    std::uint64_t verified = 0;       ///< files with all recorded hashes and the recorded size
    std::vector<NodeId> changed;      ///< files with another hash or size than was recorded
    std::vector<NodeId> unproven;     ///< recorded files of which no valid hash could be compared
    std::vector<NodeId> added;        ///< files of which the history says nothing
    std::vector<NodeId> addedFolders; ///< the same for folders, where it records folders
    /// Such files with the content of a missing one; such folders, empty as the one missing folder
    /// that had this name or this place.
    std::vector<Renamed> renamed;
    std::vector<NodeId> missing; ///< files, in History::Expected, that are not there or ignored
    std::vector<NodeId>
        missingFolders; ///< the same for folders; nothing is told of what is in them
    /// Folders, the scope among them, with other hashes than their newest generation recorded.
    std::vector<NodeId> changedFolders;

    /// Whether all is as it was recorded.
    [[nodiscard]] bool IsClean() const;
};

/// Which formats a file must be hashed in to be compared with all that is recorded of it.
FormatSet FormatsToCheck(const History& history, std::string_view path);

/// Compares, and sets for the generation to come actions, and the previous paths of renamed files.
/// `present`: all files that are there and not ignored, hashed, and the folders as well.
Comparison Compare(const History& history, Tree& present);

} // namespace nqp2::mhl
