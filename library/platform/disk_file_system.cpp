// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_file_system.h"

#include "platform/disk_folder.h"
#include "platform/disk_read.h"
#include "platform/system_status.h"

#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace nqp2::platform {

const char* SystemPath(const std::string& path) {
    return path.find('\0') == std::string::npos ? path.c_str() : "";
}

bool IsLink(const std::string& path) {
    struct stat facts = {};
    return lstat(SystemPath(path), &facts) == 0 && S_ISLNK(facts.st_mode);
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
