// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace nqp2::platform {
namespace {

/// Never waits for a pipe's writer and never makes a terminal the process's own.
constexpr int kOpenForReading = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

EntryKind KindOfMode(mode_t mode) {
    if (S_ISREG(mode)) {
        return EntryKind::File;
    }
    if (S_ISLNK(mode)) {
        return EntryKind::Link;
    }
    return S_ISDIR(mode) ? EntryKind::Folder : EntryKind::Other;
}

std::time_t CreationTime(const struct statx& facts) {
    if ((facts.stx_mask & STATX_BTIME) != 0 && facts.stx_btime.tv_sec != 0) {
        return facts.stx_btime.tv_sec;
    }
    return std::min(facts.stx_mtime.tv_sec, facts.stx_ctime.tv_sec);
}

IoStatus StatWith(int folder, const char* path, int flags, FileInfo& info) {
    struct statx facts = {};
    if (statx(folder, path, flags, STATX_BASIC_STATS | STATX_BTIME, &facts) != 0) {
        return SystemStatus(errno);
    }
    info.kind = KindOfMode(facts.stx_mode);
    info.size = facts.stx_size;
    info.modified = facts.stx_mtime.tv_sec;
    info.modifiedNanoseconds = facts.stx_mtime.tv_nsec;
    info.created = CreationTime(facts);
    info.device = makedev(facts.stx_dev_major, facts.stx_dev_minor);
    info.inode = facts.stx_ino;
    info.changed = facts.stx_ctime.tv_sec;
    info.changedNanoseconds = facts.stx_ctime.tv_nsec;
    return {};
}

IoStatus LargerThan(std::uint64_t limit) {
    return {IoError::TooLarge, "larger than " + std::to_string(limit) + " bytes"};
}

int StatFlags(Links links) {
    return links == Links::Refuse ? AT_SYMLINK_NOFOLLOW : 0;
}

int OpenRetrying(int folder, const char* path, int flags) {
    int number = -1;
    do {
        number = openat(folder, path, flags);
    } while (number < 0 && errno == EINTR);
    return number;
}

/// A socket cannot be opened at all, nor a link that is not followed; both are told apart here
/// from what is not there.
IoStatus OpenFailure(int folder, const char* path, Links links, int errorNumber) {
    FileInfo info;
    const bool special = errorNumber == ENXIO || (errorNumber == ELOOP && links == Links::Refuse);
    if (special && StatAt(folder, path, links, info)) {
        return RegularStatus(info.kind);
    }
    return SystemStatus(errorNumber);
}

IoStatus OpenRegular(int folder, const char* path, Links links, Descriptor& file,
                     std::uint64_t& size) {
    const int follow = links == Links::Refuse ? O_NOFOLLOW : 0;
    file = Descriptor(OpenRetrying(folder, path, kOpenForReading | follow));
    if (!file) {
        return OpenFailure(folder, path, links, errno);
    }
    struct stat facts = {};
    if (fstat(file.Get(), &facts) != 0) {
        return SystemStatus(errno);
    }
    size = static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0));
    return RegularStatus(KindOfMode(facts.st_mode));
}

IoStatus ReadSome(int file, char* buffer, std::size_t capacity, std::size_t& count) {
    ssize_t got = -1;
    do {
        got = read(file, buffer, std::min<std::size_t>(capacity, SSIZE_MAX));
    } while (got < 0 && errno == EINTR);
    count = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    return got < 0 ? SystemStatus(errno) : IoStatus{};
}

/// Reads to the end of a file that had `size` bytes when it was opened. The buffer is one byte
/// longer than the file, so that the read that fetches the last byte also proves the end.
/// Whatever the string held is overwritten in place, not cleared first.
IoStatus ReadToEnd(int file, std::uint64_t size, std::uint64_t limit, std::string& content) {
    content.resize(static_cast<std::size_t>(size) + 1);
    std::size_t total = 0;
    for (;;) {
        std::size_t count = 0;
        IoStatus status = ReadSome(file, content.data() + total, content.size() - total, count);
        if (!status) {
            return status;
        }
        total += count;
        if (count == 0 || total == size) {
            break;
        }
        if (total > limit) {
            return LargerThan(limit);
        }
        if (total == content.size()) {
            constexpr std::uint64_t kLeastGrowth = 4096;
            content.resize(std::min<std::uint64_t>(total * 2 + kLeastGrowth, limit + 1));
        }
    }
    content.resize(total);
    return {};
}

IoStatus ReadWithin(int folder, const char* path, Links links, std::uint64_t limit,
                    std::string& content) {
    Descriptor file;
    std::uint64_t size = 0;
    IoStatus status = OpenRegular(folder, path, links, file, size);
    if (!status) {
        return status;
    }
    return size > limit ? LargerThan(limit) : ReadToEnd(file.Get(), size, limit, content);
}

class DiskFileReader final : public FileReader {
public:
    DiskFileReader(Descriptor file, std::uint64_t size) : m_file(std::move(file)), m_size(size) {}
    DiskFileReader(const DiskFileReader&) = delete;
    DiskFileReader& operator=(const DiskFileReader&) = delete;
    ~DiskFileReader() override {
        if (m_isAround) {
            LetGo(0);
        }
    }
    [[nodiscard]] std::uint64_t Size() const override { return m_size; }
    IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) override {
        constexpr std::uint64_t kPiece = 8U << 20U; // far behind the system's reading ahead
        IoStatus status = ReadSome(m_file.Get(), buffer, capacity, count);
        m_position += count;
        if (m_isAround && m_position >= m_letGo + kPiece) {
            LetGo(m_position - m_letGo);
            m_letGo = m_position;
        }
        return status;
    }
    IoStatus Stat(FileInfo& info) override {
        return StatWith(m_file.Get(), "", AT_EMPTY_PATH, info);
    }
    void ReadAround() override {
        // What another program has only just written is let go of no sooner than it is written.
        constexpr unsigned kWritten =
            SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
        static_cast<void>(sync_file_range(m_file.Get(), 0, 0, kWritten));
        LetGo(0);
        static_cast<void>(posix_fadvise(m_file.Get(), 0, 0, POSIX_FADV_SEQUENTIAL));
        m_isAround = true;
    }

private:
    /// Of that many bytes from where it ended last; 0: of the whole file.
    void LetGo(std::uint64_t count) const {
        const std::uint64_t from = count == 0 ? 0 : m_letGo;
        static_cast<void>(posix_fadvise(m_file.Get(), static_cast<off_t>(from),
                                        static_cast<off_t>(count), POSIX_FADV_DONTNEED));
    }

    Descriptor m_file;
    std::uint64_t m_size;
    std::uint64_t m_position = 0;
    std::uint64_t m_letGo = 0; ///< bytes from the beginning
    bool m_isAround = false;
};

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};
using FolderStream = std::unique_ptr<DIR, FolderCloser>;

bool IsDots(std::string_view name) {
    return name == "." || name == "..";
}

EntryKind KindOfEntry(const dirent& entry, int folder, Links links) {
    switch (entry.d_type) {
    case DT_REG:
        return EntryKind::File;
    case DT_DIR:
        return EntryKind::Folder;
    case DT_UNKNOWN: // some file systems do not tell
    case DT_LNK: {
        FileInfo info;
        return StatAt(folder, entry.d_name, links, info) ? info.kind : EntryKind::Other;
    }
    default:
        return EntryKind::Other;
    }
}

} // namespace

IoStatus LinkStatus() {
    return {IoError::IsLink, "it is a link, through which nothing is read or written here"};
}

IoStatus RegularStatus(EntryKind kind) {
    switch (kind) {
    case EntryKind::File:
        return {};
    case EntryKind::Folder:
        return SystemStatus(EISDIR);
    case EntryKind::Link:
        return LinkStatus();
    case EntryKind::Other:
        break;
    }
    return {IoError::NotAFile, "not a regular file"};
}

IoStatus StatAt(int folder, const char* path, Links links, FileInfo& info) {
    return StatWith(folder, path, StatFlags(links), info);
}

IoStatus OpenAt(int folder, const char* path, Links links, std::unique_ptr<FileReader>& reader) {
    Descriptor file;
    std::uint64_t size = 0;
    IoStatus status = OpenRegular(folder, path, links, file, size);
    if (status) {
        reader = std::make_unique<DiskFileReader>(std::move(file), size);
    }
    return status;
}

IoStatus ReadAt(int folder, const char* path, Links links, std::uint64_t limit,
                std::string& content) {
    const std::uint64_t bounded = std::min<std::uint64_t>(limit, content.max_size() - 1);
    IoStatus status = ReadWithin(folder, path, links, bounded, content);
    if (!status) {
        content.clear();
    }
    return status;
}

IoStatus ListOpen(Descriptor folder, Links links, std::size_t most,
                  std::vector<FolderEntry>& entries) {
    entries.clear();
    const FolderStream stream(fdopendir(folder.Get()));
    if (stream == nullptr) {
        return SystemStatus(errno);
    }
    static_cast<void>(folder.Release()); // the stream closes it
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(stream.get());
        if (entry == nullptr) {
            return SystemStatus(errno);
        }
        if (IsDots(entry->d_name)) {
            continue;
        }
        if (entries.size() == most) {
            return {IoError::TooLarge, "more than " + std::to_string(most) + " entries"};
        }
        entries.push_back({entry->d_name, KindOfEntry(*entry, dirfd(stream.get()), links)});
    }
}

} // namespace nqp2::platform
