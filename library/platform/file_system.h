// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/io_status.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The one way to files. Paths are POSIX paths and are taken exactly, letter case included;
/// platform/case_blind.h finds names as a card's file system does.
namespace nqp2::platform {

/// Far above a full card (100,000 clips of 16 sound files); bounds what a folder can cost.
inline constexpr std::size_t kMaxFolderEntries = 2'000'000;

/// Link where links are told apart, as an open Folder does; elsewhere what they lead to counts.
enum class EntryKind { File, Folder, Other, Link };

struct FolderEntry {
    std::string name;
    EntryKind kind = EntryKind::File;
};

struct FileInfo {
    EntryKind kind = EntryKind::File;
    std::uint64_t size = 0;
    std::time_t modified = 0;              ///< last change of the content, seconds since 1970 UTC
    std::uint32_t modifiedNanoseconds = 0; ///< and what there is beyond the second
    std::time_t created = 0; ///< birth time where the medium keeps one, else the earliest known
    // With `modified` these tell one file or folder, and one state of it, from another.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::time_t changed = 0; ///< last change of anything, which no program can set
    std::uint32_t changedNanoseconds = 0;
};

/// A file open for reading. One thread at a time.
class FileReader {
public:
    virtual ~FileReader() = default;
    /// Size when the file was opened.
    [[nodiscard]] virtual std::uint64_t Size() const = 0;
    /// Reads up to `capacity` bytes; `count` is 0 at the end of the file.
    virtual IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) = 0;
    /// What the open file is like now.
    virtual IoStatus Stat(FileInfo& info) = 0;
    /// From now on bytes come from the medium where there is one: the system's copy of the file is
    /// let go of, and that of what is read does not stay.
    virtual void ReadAround() = 0;
};

/// A file in the making, under a hidden name in the folder of its future place. It is taken away
/// again unless it is committed; what a killed process leaves is removed by RemoveAbandoned.
/// One thread at a time; beside it another may Flush and ReadAt.
class FileWriter {
public:
    virtual ~FileWriter() = default;
    /// Writes all bytes at that position; what lies between the end and the position reads as
    /// zeros. TooLarge, without a signal, beyond what the process may make a file.
    virtual IoStatus WriteAt(std::uint64_t position, std::string_view bytes) = 0;
    /// Sets the length.
    virtual IoStatus Resize(std::uint64_t size) = 0;
    /// Gives the file the time of change of another.
    virtual IoStatus KeepTime(const FileInfo& source) = 0;
    /// Brings the file onto the medium and lets go of the system's copy, so that what is read next
    /// comes from the medium where there is one.
    virtual IoStatus Flush() = 0;
    /// Lets go of the system's copy of what Folder::FlushAll has flushed.
    virtual void LetGo() = 0;
    /// Reads up to `capacity` bytes; `count` is 0 at the end of the file.
    virtual IoStatus ReadAt(std::uint64_t position, char* buffer, std::size_t capacity,
                            std::size_t& count) = 0;
    /// Lets go of the open file, so that many can wait for their names; a flushed file is then
    /// committed or dropped, nothing else.
    virtual IoStatus Close() = 0;
    /// Gives the flushed file its name; Exists when that is taken. After a failure it may be asked
    /// for again.
    virtual IoStatus Commit() = 0;
    /// The same with another name in the same folder.
    virtual IoStatus CommitAs(const std::string& name) = 0;
    /// As Commit; the name reaches the medium by Folder::Flush or FlushAll.
    virtual IoStatus CommitUnflushed() = 0;
};

class Folder;

/// Any operation on the empty path, or on one that holds a zero byte, ends in NotFound.
/// Every operation may be called from several threads at once.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// What the path leads to (links are followed).
    virtual IoStatus Stat(const std::string& path, FileInfo& info) = 0;
    /// The entries of a folder in the file system's order, without "." and "..".
    /// Kinds follow links; a link that leads nowhere is Other. Entries read before an error are
    /// kept; a folder of more than kMaxFolderEntries stops there with TooLarge.
    virtual IoStatus List(const std::string& folder, std::vector<FolderEntry>& entries) = 0;
    /// Opens a regular file; never waits on a pipe or device.
    virtual IoStatus Open(const std::string& path, std::unique_ptr<FileReader>& reader) = 0;
    /// Reads a whole regular file of at most `limit` bytes (TooLarge beyond it), growing or
    /// shrinking files included. Four system calls for a file that fits its own size. The
    /// string's memory is used again: one string for many files saves time. Empty on failure.
    virtual IoStatus Read(const std::string& path, std::uint64_t limit, std::string& content) = 0;
    /// Free bytes of the medium that holds the path, those kept for the administrator included.
    virtual IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) = 0;
    /// Opens a folder for everything that writes (platform/folder.h); links are followed. It is the
    /// root below which no link is.
    virtual IoStatus OpenFolder(const std::string& path, std::unique_ptr<Folder>& folder) = 0;

    /// Folder's operation on a path, whose own folder is the root; both are found case-blind, and
    /// an existing file in another letter case is replaced under its own name.
    IoStatus WriteWhole(const std::string& path, std::string_view content);
};

/// The disk itself.
FileSystem& DiskFiles();

/// The file system in use: the disk, or what a test put in its place.
FileSystem& Files();

/// Lists a folder. Throws std::bad_alloc when memory ran out on the way: a folder whose names there
/// is no room for must not pass for one without them.
IoStatus ListWhole(FileSystem& files, const std::string& folder, std::vector<FolderEntry>& entries);

/// Reads up to `limit` bytes from the beginning of a regular file of any size. Empty on failure.
IoStatus ReadHead(FileSystem& files, const std::string& path, std::uint64_t limit,
                  std::string& content);

// Paths as texts: "/a/" and "b" of "/a/b", "" and "b" of "b"; and "/a/b" of "/a" or "/a/" and "b".
std::string FolderPart(const std::string& path);
std::string NamePart(const std::string& path);
std::string PathIn(const std::string& folder, const std::string& name);

/// Puts `replacement` in the disk's place for its own lifetime. For tests and benchmarks; not
/// while another thread reads files.
class ScopedFileSystem {
public:
    explicit ScopedFileSystem(FileSystem& replacement);
    ~ScopedFileSystem();
    ScopedFileSystem(const ScopedFileSystem&) = delete;
    ScopedFileSystem& operator=(const ScopedFileSystem&) = delete;

private:
    FileSystem* m_previous;
};

} // namespace nqp2::platform
