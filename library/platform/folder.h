// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"
#include "platform/medium.h"

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::platform {

/// Held by one of all who ask for the same name in the same folder; goes with this object, or with
/// its process, however that ends.
class NameLock {
public:
    virtual ~NameLock() = default;
};

/// A folder that is open: held by its handle, so that it stays the same folder whatever becomes of
/// the path that led to it. Everything that is written, replaced, removed or made below a card's
/// root goes through one, and nothing below it follows a link, also not one that is put there in
/// the meantime: IsLink is the answer. Only the root itself, opened by FileSystem::OpenFolder, may
/// be reached through links.
///
/// Names are those of single entries, letter case included; "", ".", ".." and names with a
/// separator or a zero byte are refused. FindIn finds names as a card's file system does. One
/// thread at a time; what was opened in a folder does not need it any more.
class Folder {
public:
    virtual ~Folder() = default;

    /// The path by which it was opened, for messages alone.
    [[nodiscard]] virtual const std::string& Path() const = 0;

    virtual IoStatus OpenFolder(const std::string& name, std::unique_ptr<Folder>& folder) = 0;
    /// Makes a folder and brings its name onto the medium; none is left after a failure. Exists
    /// when the name is taken.
    virtual IoStatus MakeFolder(const std::string& name) = 0;
    /// The same; the name reaches the medium by Flush or FlushAll.
    virtual IoStatus MakeUnflushed(const std::string& name) = 0;
    /// Removes a folder that is empty, flushed.
    virtual IoStatus RemoveFolder(const std::string& name) = 0;

    /// What has the name; a link is told as such.
    virtual IoStatus Stat(const std::string& name, FileInfo& info) = 0;
    /// As FileSystem::List, with links told as such.
    virtual IoStatus List(std::vector<FolderEntry>& entries) = 0;
    /// As FileSystem::Open and Read; a link is refused.
    virtual IoStatus Open(const std::string& name, std::unique_ptr<FileReader>& reader) = 0;
    virtual IoStatus Read(const std::string& name, std::uint64_t limit, std::string& content) = 0;

    /// Replaces or makes a file: hidden temporary beside it, flushed, renamed over it, folder
    /// flushed. On any failure the old file stays as it was, or none when there was none, and
    /// nothing is left behind. Permission bits stay. What is no regular file, and one that may not
    /// be written, is not replaced.
    virtual IoStatus WriteWhole(const std::string& name, std::string_view content) = 0;
    /// Begins a file whose name will be `name`.
    virtual IoStatus Create(const std::string& name, std::unique_ptr<FileWriter>& writer) = 0;
    /// Removes regular files, all that it can, and brings that onto the medium, so that one call's
    /// removals reach it before the next one's. After a failure `failed` is the first name of it.
    virtual IoStatus RemoveFiles(std::span<const std::string> names, std::string& failed) = 0;
    IoStatus RemoveFile(const std::string& name) {
        std::string failed;
        return RemoveFiles({&name, 1}, failed);
    }
    /// Gives a file another name, flushed; Exists when that is taken, also by another writer at the
    /// same moment. After a failure it has its old name.
    virtual IoStatus MoveToFree(const std::string& from, const std::string& to) = 0;
    /// Removes the hidden files of writers that no longer live; those of writers that do, in this
    /// process or another, stay.
    virtual IoStatus RemoveAbandoned() = 0;

    /// Brings the names in the folder onto the medium.
    virtual IoStatus Flush() = 0;
    /// Brings all files and names of the folder's file system onto the medium.
    virtual IoStatus FlushAll() = 0;
    /// Gives an entry, or with "" the folder itself, the time of change of another; a link's own.
    virtual IoStatus KeepTime(const std::string& name, const FileInfo& source) = 0;

    /// Free bytes of the folder's medium that an ordinary user may fill.
    virtual IoStatus UsableSpace(std::uint64_t& bytes) = 0;
    virtual IoStatus Medium(MediumFacts& facts) = 0;
    /// Whether names that differ in letter case alone are one name here: tried by a hidden file.
    virtual IoStatus IsCaseBlind(bool& isBlind) = 0;

    /// Keeps others that lock the same folder out as long as this object lives, so that what one of
    /// them reads and writes back is not lost to another. Waits that long, then Busy. Binds only
    /// those who ask. Where folders cannot be locked it succeeds and keeps no one out.
    virtual IoStatus Lock(std::chrono::milliseconds patience) = 0;
    /// Locks a name (any text, letter case ignored), which no entry needs to have. Busy, at once,
    /// when another process or object has it; with no lock where files cannot be locked.
    virtual IoStatus LockName(const std::string& name, std::unique_ptr<NameLock>& lock) = 0;
};

/// Whether this is the name of a single entry.
bool IsEntryName(std::string_view name);

/// The real spelling of an entry: the name as given when there is one (one system call), else the
/// first in sorted order of those that differ only in case; NotFound when there is none.
IoStatus FindIn(Folder& folder, const std::string& name, std::string& found);

/// The same, or the name as given when there is none.
IoStatus FindTargetIn(Folder& folder, const std::string& name, std::string& target);

/// Opens a card's root, found case-blind; links are followed.
IoStatus OpenRoot(const std::string& path, std::unique_ptr<Folder>& root);
IoStatus OpenRoot(FileSystem& files, const std::string& path, std::unique_ptr<Folder>& root);
/// Opens a folder below another step by step, each name ("CONTENTS/VIDEO") found case-blind and
/// none of them a link.
IoStatus OpenBelow(Folder& root, std::string_view path, std::unique_ptr<Folder>& folder);
/// The same; what is missing on the way is made.
IoStatus MakeBelow(Folder& root, std::string_view path, std::unique_ptr<Folder>& folder);

} // namespace nqp2::platform
