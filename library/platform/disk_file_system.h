// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

namespace nqp2::platform {

/// The file system of the machine.
class DiskFileSystem final : public FileSystem {
public:
    explicit DiskFileSystem(std::size_t maxFolderEntries = kMaxFolderEntries)
        : m_maxFolderEntries(maxFolderEntries) {}

    IoStatus Stat(const std::string& path, FileInfo& info) override;
    IoStatus List(const std::string& folder, std::vector<FolderEntry>& entries) override;
    IoStatus Open(const std::string& path, std::unique_ptr<FileReader>& reader) override;
    IoStatus Read(const std::string& path, std::uint64_t limit, std::string& content) override;
    IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) override;
    IoStatus OpenFolder(const std::string& path, std::unique_ptr<Folder>& folder) override;

private:
    std::size_t m_maxFolderEntries;
};

/// The path for a system call; one that holds a zero byte becomes the empty path, which the
/// system never finds, instead of naming another file.
const char* SystemPath(const std::string& path);

/// Bytes in `blocks` of `blockSize` bytes; the largest number when the product does not fit.
std::uint64_t BytesOfBlocks(std::uint64_t blocks, std::uint64_t blockSize);

} // namespace nqp2::platform
