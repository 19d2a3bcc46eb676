// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"

#include "platform/disk_file_system.h"

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

ScopedFileSystem::ScopedFileSystem(FileSystem& replacement)
    : m_previous(fileSystemInUse.exchange(&replacement)) {}

ScopedFileSystem::~ScopedFileSystem() {
    fileSystemInUse.store(m_previous);
}

} // namespace nqp2::platform
