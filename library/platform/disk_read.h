// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"
#include "platform/file_system.h"

/// Reading on the disk, by names in an open folder (its descriptor) or, with AT_FDCWD, by paths.
namespace nqp2::platform {

/// What is done with a link at the end of a path.
enum class Links { Follow, Refuse };

/// Says that something is a link where none is followed.
IoStatus LinkStatus();
/// Says that something is no file that can be read or written; success for one that is.
IoStatus RegularStatus(EntryKind kind);

IoStatus StatAt(int folder, const char* path, Links links, FileInfo& info);
IoStatus OpenAt(int folder, const char* path, Links links, std::unique_ptr<FileReader>& reader);
IoStatus ReadAt(int folder, const char* path, Links links, std::uint64_t limit,
                std::string& content);
/// Lists an open folder of at most `most` entries.
IoStatus ListOpen(Descriptor folder, Links links, std::size_t most,
                  std::vector<FolderEntry>& entries);

} // namespace nqp2::platform
