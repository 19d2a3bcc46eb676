// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"
#include "platform/folder.h"

#include <array>
#include <ctime>
#include <memory>

/// What the sources of the disk's file system have in common. "At" reads by names in an open folder
/// (its descriptor) or, with AT_FDCWD, by paths.
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

/// What is done with a link at the end of a path.
enum class Links { Follow, Refuse };

/// Says that something is a link where none is followed.
IoStatus LinkStatus();
/// Says that something is no file that can be read or written; success for one that is.
IoStatus RegularStatus(EntryKind kind);

IoStatus StatAt(int folder, const char* path, Links links, FileInfo& info);
IoStatus OpenAt(int folder, const char* path, Links links, std::unique_ptr<FileReader>& reader);
IoStatus ReadAt(int folder, const char* path, Links links, std::uint64_t limit,
                std::string& content);
/// Lists an open folder of at most `most` entries.
IoStatus ListOpen(Descriptor folder, Links links, std::size_t most,
                  std::vector<FolderEntry>& entries);

/// An open folder of the disk, shared by its Folder and the writers that were begun in it.
class FolderHandle {
public:
    /// A folder that may not be read is opened as a mere place: it cannot be locked or flushed.
    FolderHandle(Descriptor folder, bool isReadable)
        : m_folder(std::move(folder)), m_isReadable(isReadable) {}

    [[nodiscard]] int Get() const { return m_folder.Get(); }
    /// Brings changed names onto the medium.
    IoStatus Flush() const;
    /// Brings all of its file system onto the medium.
    IoStatus FlushAll() const;

    /// Keeps out all others that ask the same.
    IoStatus LockAlone(std::chrono::milliseconds patience);
    /// Keeps sweepers out: for writers whose closed files nothing else tells from abandoned ones.
    IoStatus LockShared();
    /// Whether no other writer has closed files here; until EndSweep none will.
    bool BeginSweep();
    void EndSweep() const;

private:
    enum class Held { None, Shared, Alone };

    Descriptor m_folder;
    bool m_isReadable;
    Held m_held = Held::None;
};
using FolderPtr = std::shared_ptr<FolderHandle>;

/// Opens a folder of the disk by its path, links followed.
IoStatus OpenDiskFolder(const std::string& path, std::size_t maxEntries,
                        std::unique_ptr<Folder>& folder);

/// For utimensat: the time of change of another file, with the time of reading left alone.
std::array<timespec, 2> TimesOf(const FileInfo& source);

/// Whether a new name is brought onto the medium at once.
enum class NamesFlushed { Now, Later };

/// What an open file or folder lies on.
IoStatus MediumOf(int file, MediumFacts& facts);

// Folder's writing operations on the disk. Names are those of entries.
IoStatus WriteWholeIn(const FolderPtr& folder, const std::string& name, std::string_view content);
IoStatus CreateIn(const FolderPtr& folder, const std::string& name,
                  std::unique_ptr<FileWriter>& writer);
IoStatus MoveToFreeIn(const FolderPtr& folder, const std::string& from, const std::string& to,
                      NamesFlushed flushed = NamesFlushed::Now);
IoStatus IsCaseBlindIn(const FolderPtr& folder, bool& isBlind);
IoStatus LockNameIn(const FolderPtr& folder, const std::string& name,
                    std::chrono::milliseconds patience, std::unique_ptr<NameLock>& lock);

} // namespace nqp2::platform
