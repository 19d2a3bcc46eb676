// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"

#include "platform/disk.h"
#include "platform/guard.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/statvfs.h>

namespace nqp2::platform {
namespace {

/// Null: the disk.
std::atomic<FileSystem*> fileSystemInUse = nullptr;

} // namespace

IoStatus FileSystem::WriteWhole(const std::string& path, std::string_view content) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        return {IoError::NotFound, "there is no such file"};
    }
    const std::string above = FolderPart(path);
    std::unique_ptr<Folder> folder;
    IoStatus status = OpenRoot(*this, above.empty() ? "." : above, folder);
    if (status && path.ends_with('/')) {
        return {IoError::IsFolder, "it is a folder"};
    }
    std::string name;
    status = status ? FindTargetIn(*folder, NamePart(path), name) : status;
    return status ? folder->WriteWhole(name, content) : status;
}

FileSystem& DiskFiles() {
    static DiskFileSystem disk;
    return disk;
}

FileSystem& Files() {
    FileSystem* const replacement = fileSystemInUse.load(std::memory_order_acquire);
    return replacement != nullptr ? *replacement : DiskFiles();
}

IoStatus ListWhole(FileSystem& files, const std::string& folder,
                   std::vector<FolderEntry>& entries) {
    const MemoryWatch watch;
    IoStatus status = files.List(folder, entries);
    watch.Require();
    return status;
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

std::string FolderPart(const std::string& path) {
    return path.substr(0, path.find_last_of('/') + 1);
}

std::string NamePart(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string PathIn(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

ScopedFileSystem::ScopedFileSystem(FileSystem& replacement)
    : m_previous(fileSystemInUse.exchange(&replacement)) {}

ScopedFileSystem::~ScopedFileSystem() {
    fileSystemInUse.store(m_previous);
}

const char* SystemPath(const std::string& path) {
    return path.find('\0') == std::string::npos ? path.c_str() : "";
}

std::uint64_t BytesOfBlocks(std::uint64_t blocks, std::uint64_t blockSize) {
    constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
    return blockSize != 0 && blocks > kMost / blockSize ? kMost : blocks * blockSize;
}

IoStatus DiskFileSystem::Stat(const std::string& path, FileInfo& info) {
    return StatAt(AT_FDCWD, SystemPath(path), Links::Follow, info);
}

IoStatus DiskFileSystem::List(const std::string& folder, std::vector<FolderEntry>& entries) {
    Descriptor opened(open(SystemPath(folder), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!opened) {
        entries.clear();
        return SystemStatus(errno);
    }
    return ListOpen(std::move(opened), Links::Follow, m_maxFolderEntries, entries);
}

IoStatus DiskFileSystem::Open(const std::string& path, std::unique_ptr<FileReader>& reader) {
    return OpenAt(AT_FDCWD, SystemPath(path), Links::Follow, reader);
}

IoStatus DiskFileSystem::Read(const std::string& path, std::uint64_t limit, std::string& content) {
    return ReadAt(AT_FDCWD, SystemPath(path), Links::Follow, limit, content);
}

IoStatus DiskFileSystem::FreeSpace(const std::string& path, std::uint64_t& bytes) {
    struct statvfs facts = {};
    if (statvfs(SystemPath(path), &facts) != 0) {
        return SystemStatus(errno);
    }
    bytes = BytesOfBlocks(facts.f_bfree, facts.f_frsize);
    return {};
}

IoStatus DiskFileSystem::OpenFolder(const std::string& path, std::unique_ptr<Folder>& folder) {
    return OpenDiskFolder(path, m_maxFolderEntries, folder);
}

} // namespace nqp2::platform
