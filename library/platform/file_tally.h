// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/file_system.h"
#include "platform/folder_index.h"
#include "platform/place.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace nqp2::platform {

/// A folder of which files are counted one by one.
class TalliedFolder {
public:
    explicit TalliedFolder(Place place);

    /// In the file system's order, listed once.
    [[nodiscard]] const std::vector<FolderEntry>& Entries() const { return m_names->Entries(); }
    /// The number of an entry, found as FolderIndex does; kNone when there is none.
    [[nodiscard]] std::size_t Find(const std::string& name) const;
    static constexpr std::size_t kNone = SIZE_MAX;

    [[nodiscard]] const Place& Where() const { return m_place; }
    /// The interface path of an entry; and the same for the file system.
    [[nodiscard]] CString PathOf(std::size_t entry) const;
    [[nodiscard]] std::string OnDisk(std::size_t entry) const;

    /// Counts an entry and asks for what it is. False, uncounted, when it is no file.
    bool Take(std::size_t entry, FileInfo& info);
    /// As FileSystem::Read.
    IoStatus Read(std::size_t entry, std::uint64_t limit, std::string& content);
    [[nodiscard]] bool IsTaken(std::size_t entry) const { return m_taken[entry]; }

private:
    /// The system finds a name in an open folder sooner than behind a path. Null when it cannot be
    /// opened.
    platform::Folder* Opened();

    Place m_place;
    const FolderIndex* m_names;
    std::unique_ptr<platform::Folder> m_opened;
    bool m_isTried = false; ///< to open it
    std::vector<bool> m_taken;
};

/// What was not counted and is no folder.
struct RestFile {
    CString path; ///< interface path
    std::uint64_t size = 0;
    EntryKind kind = EntryKind::File;
};

/// Counts the files below a root: each folder is listed once, and what was not counted is told in
/// the end. It sees no change behind that.
class FileTally {
public:
    explicit FileTally(Place root) : m_root(std::move(root)) {}

    [[nodiscard]] const Place& Root() const { return m_root; }
    /// A folder below the root, the same one each time.
    TalliedFolder& Folder(const Place& place);

    /// Appends what was not counted below the root, in no order. No link is followed, no name with
    /// a backslash told. False when a folder cannot be read, or
    /// there is more than is looked at.
    bool Rest(std::vector<RestFile>& files) { return RestBelow(m_root, files); }
    /// The same below a folder above the root.
    bool RestBelow(const Place& top, std::vector<RestFile>& files);

private:
    struct Step;
    bool AddRest(const Step& step, std::vector<Step>& steps, std::vector<RestFile>& files);

    Place m_root;
    std::map<std::string, TalliedFolder> m_folders; ///< by their paths on disk
    std::size_t m_left = 0;                         ///< entries that may still be looked at
};

} // namespace nqp2::platform
