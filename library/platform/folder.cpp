// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder.h"

#include "platform/case_blind.h"
#include "platform/case_fold.h"

#include <algorithm>

namespace nqp2::platform {
namespace {

IoStatus OpenStep(Folder& above, const std::string& name, bool make,
                  std::unique_ptr<Folder>& folder) {
    std::string found;
    IoStatus status = FindIn(above, name, found);
    if (make && status.error == IoError::NotFound) {
        found = name;
        status = above.MakeFolder(name);
        if (status.error == IoError::Exists) {
            status = {}; // another process made it in between
        }
    }
    return status ? above.OpenFolder(found, folder) : status;
}

IoStatus OpenSteps(Folder& root, std::string_view path, bool make,
                   std::unique_ptr<Folder>& folder) {
    std::unique_ptr<Folder> reached;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find('/'), path.size());
        const std::string name(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
        std::unique_ptr<Folder> next;
        IoStatus status = OpenStep(reached ? *reached : root, name, make, next);
        if (!status) {
            return status;
        }
        reached = std::move(next);
    }
    folder = std::move(reached);
    return folder ? IoStatus{} : IoStatus{IoError::NotFound, "no folder is named"};
}

} // namespace

bool IsEntryName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

IoStatus FindIn(Folder& folder, const std::string& name, std::string& found) {
    FileInfo info;
    IoStatus status = folder.Stat(name, info);
    if (status.error != IoError::NotFound) {
        found = name;
        return status;
    }
    std::vector<FolderEntry> entries;
    IoStatus listed = folder.List(entries);
    if (!listed) {
        // A folder that may be written but not read is searched for exact names alone.
        return listed.error == IoError::Denied ? status : listed;
    }
    const std::string folded = FoldNameCase(name);
    const FolderEntry* first = nullptr;
    for (const FolderEntry& entry : entries) {
        if ((first == nullptr || entry.name < first->name) && FoldNameCase(entry.name) == folded) {
            first = &entry;
        }
    }
    if (first == nullptr) {
        return status;
    }
    found = first->name;
    return {};
}

IoStatus FindTargetIn(Folder& folder, const std::string& name, std::string& target) {
    IoStatus status = FindIn(folder, name, target);
    if (status.error == IoError::NotFound) {
        target = name;
        return {};
    }
    return status;
}

IoStatus OpenRoot(const std::string& path, std::unique_ptr<Folder>& root) {
    return OpenRoot(Files(), path, root);
}

IoStatus OpenRoot(FileSystem& files, const std::string& path, std::unique_ptr<Folder>& root) {
    return files.OpenFolder(FindExisting(files, path).value_or(path), root);
}

IoStatus OpenBelow(Folder& root, std::string_view path, std::unique_ptr<Folder>& folder) {
    return OpenSteps(root, path, false, folder);
}

IoStatus MakeBelow(Folder& root, std::string_view path, std::unique_ptr<Folder>& folder) {
    return OpenSteps(root, path, true, folder);
}

} // namespace nqp2::platform
