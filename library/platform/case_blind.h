// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

#include <optional>
#include <string>
#include <vector>

/// Finds files as a card's own file system does: without regard to letter case.
namespace nqp2::platform {

class FolderMemory;

/// The real spelling of a path that exists: the path as given when it exists so (one system
/// call), else each component searched case-blind in its folder. The exact name wins; without it
/// those that differ only in case are tried in sorted order until the rest of the path is found.
/// Nothing when the path does not exist or cannot be reached. Doubled separators do not matter; a
/// trailing one is kept and asks for a folder. A memory, when given, spares the listing of folders
/// that it knows.
std::optional<std::string> FindExisting(const std::string& path, FolderMemory* memory = nullptr);
std::optional<std::string> FindExisting(FileSystem& files, const std::string& path);

/// The nearest folder above an absolute path that exists, or what is there under the path itself.
struct NearestExisting {
    std::string path;                 ///< in its real spelling; empty when nothing can be reached
    std::vector<std::string> missing; ///< the names below it, the last one first
};
NearestExisting FindNearest(const std::string& path);

} // namespace nqp2::platform
