// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"

#include "platform/disk_file_system.h"

#include <algorithm>
#include <atomic>

namespace nqp2::platform {
namespace {

/// Null stands for the disk.
std::atomic<FileSystem*> fileSystemInUse = nullptr;

} // namespace

FileSystem& DiskFiles() {
    static DiskFileSystem disk;
    return disk;
}

FileSystem& Files() {
    FileSystem* const replacement = fileSystemInUse.load(std::memory_order_acquire);
    return replacement != nullptr ? *replacement : DiskFiles();
}

IoStatus ReadHead(FileSystem& files, const std::string& path, std::uint64_t limit,
                  std::string& content) {
    std::unique_ptr<FileReader> reader;
    IoStatus status = files.Open(path, reader);
    content.resize(status ? static_cast<std::size_t>(std::min(limit, reader->Size())) : 0);
    std::size_t total = 0;
    std::size_t count = 1;
    while (status && count != 0 && total < content.size()) {
        status = reader->Read(content.data() + total, content.size() - total, count);
        total += count;
    }
    content.resize(status ? total : 0);
    return status;
}

ScopedFileSystem::ScopedFileSystem(FileSystem& replacement)
    : m_previous(fileSystemInUse.exchange(&replacement)) {}

ScopedFileSystem::~ScopedFileSystem() {
    fileSystemInUse.store(m_previous);
}

} // namespace nqp2::platform
