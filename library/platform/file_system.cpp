// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_system.h"

#include "platform/case_blind.h"
#include "platform/disk_file_system.h"
#include "platform/folder.h"

#include <algorithm>
#include <atomic>

namespace nqp2::platform {
namespace {

/// Null stands for the disk.
std::atomic<FileSystem*> fileSystemInUse = nullptr;

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.find_last_of('/') + 1);
}

/// Runs an operation on the last name of a path in the folder that holds it.
template <class Operation>
IoStatus InFolderOf(FileSystem& files, const std::string& path, Operation operation) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        return {IoError::NotFound, "there is no such file"};
    }
    const std::string above = FolderOf(path);
    std::unique_ptr<Folder> folder;
    IoStatus status = files.OpenFolder(above.empty() ? "." : above, folder);
    if (status && path.ends_with('/')) {
        return {IoError::IsFolder, "it is a folder"};
    }
    return status ? operation(*folder, path.substr(above.size())) : status;
}

} // namespace

IoStatus FileSystem::WriteWhole(const std::string& path, std::string_view content) {
    return InFolderOf(*this, FindTarget(*this, path), [&](Folder& folder, const std::string& name) {
        return folder.WriteWhole(name, content);
    });
}

IoStatus FileSystem::RemoveFile(const std::string& path) {
    return InFolderOf(*this, path, [](Folder& folder, const std::string& name) {
        return folder.RemoveFile(name);
    });
}

IoStatus FileSystem::MoveToFree(const std::string& from, const std::string& to) {
    const std::string above = FolderOf(from);
    if (FolderOf(to) != above) {
        return {IoError::NotFound, "a file keeps its folder"};
    }
    return InFolderOf(*this, from, [&](Folder& folder, const std::string& name) {
        return folder.MoveToFree(name, to.substr(above.size()));
    });
}

IoStatus FileSystem::MakeFolder(const std::string& path) {
    return InFolderOf(*this, path, [](Folder& folder, const std::string& name) {
        return folder.MakeFolder(name);
    });
}

IoStatus FileSystem::Create(const std::string& path, std::unique_ptr<FileWriter>& writer) {
    return InFolderOf(*this, path, [&](Folder& folder, const std::string& name) {
        return folder.Create(name, writer);
    });
}

IoStatus FileSystem::RemoveAbandoned(const std::string& path) {
    std::unique_ptr<Folder> folder;
    IoStatus status = OpenFolder(path, folder);
    return status ? folder->RemoveAbandoned() : status;
}

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
