// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_file_system.h"

#include "platform/descriptor.h"
#include "platform/system_status.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace nqp2::platform {
namespace {

/// Never waits for a pipe's writer and never makes a terminal the process's own.
constexpr int kOpenForReading = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

EntryKind KindOfMode(mode_t mode) {
    if (S_ISREG(mode)) {
        return EntryKind::File;
    }
    return S_ISDIR(mode) ? EntryKind::Folder : EntryKind::Other;
}

IoStatus NotRegular(EntryKind kind) {
    if (kind == EntryKind::Folder) {
        return SystemStatus(EISDIR);
    }
    return {IoError::NotAFile, "not a regular file"};
}

IoStatus LargerThan(std::uint64_t limit) {
    return {IoError::TooLarge, "larger than " + std::to_string(limit) + " bytes"};
}

int OpenRetrying(const char* path, int flags) {
    int number = -1;
    do {
        number = open(path, flags);
    } while (number < 0 && errno == EINTR);
    return number;
}

/// A socket cannot be opened at all and is told apart from a missing device here.
IoStatus OpenFailure(const char* path, int errorNumber) {
    struct stat facts = {};
    if (errorNumber == ENXIO && stat(path, &facts) == 0) {
        return NotRegular(KindOfMode(facts.st_mode));
    }
    return SystemStatus(errorNumber);
}

IoStatus OpenRegular(const std::string& path, Descriptor& file, std::uint64_t& size) {
    file = Descriptor(OpenRetrying(SystemPath(path), kOpenForReading));
    if (!file) {
        return OpenFailure(SystemPath(path), errno);
    }
    struct stat facts = {};
    if (fstat(file.Get(), &facts) != 0) {
        return SystemStatus(errno);
    }
    const EntryKind kind = KindOfMode(facts.st_mode);
    size = static_cast<std::uint64_t>(std::max<off_t>(facts.st_size, 0));
    return kind == EntryKind::File ? IoStatus{} : NotRegular(kind);
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

IoStatus ReadWithin(const std::string& path, std::uint64_t limit, std::string& content) {
    Descriptor file;
    std::uint64_t size = 0;
    IoStatus status = OpenRegular(path, file, size);
    if (!status) {
        return status;
    }
    return size > limit ? LargerThan(limit) : ReadToEnd(file.Get(), size, limit, content);
}

class DiskFileReader final : public FileReader {
public:
    DiskFileReader(Descriptor file, std::uint64_t size) : m_file(std::move(file)), m_size(size) {}
    [[nodiscard]] std::uint64_t Size() const override { return m_size; }
    IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) override {
        return ReadSome(m_file.Get(), buffer, capacity, count);
    }

private:
    Descriptor m_file;
    std::uint64_t m_size;
};

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

bool IsDots(std::string_view name) {
    return name == "." || name == "..";
}

EntryKind KindOfEntry(const dirent& entry, int folder) {
    switch (entry.d_type) {
    case DT_REG:
        return EntryKind::File;
    case DT_DIR:
        return EntryKind::Folder;
    case DT_UNKNOWN: // some file systems do not tell
    case DT_LNK: {
        struct stat facts = {};
        const bool known = fstatat(folder, entry.d_name, &facts, 0) == 0;
        return known ? KindOfMode(facts.st_mode) : EntryKind::Other;
    }
    default:
        return EntryKind::Other;
    }
}

std::time_t CreationTime(const struct statx& facts) {
    if ((facts.stx_mask & STATX_BTIME) != 0 && facts.stx_btime.tv_sec != 0) {
        return facts.stx_btime.tv_sec;
    }
    return std::min(facts.stx_mtime.tv_sec, facts.stx_ctime.tv_sec);
}

} // namespace

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
    struct statx facts = {};
    if (statx(AT_FDCWD, SystemPath(path), 0, STATX_BASIC_STATS | STATX_BTIME, &facts) != 0) {
        return SystemStatus(errno);
    }
    info.kind = KindOfMode(facts.stx_mode);
    info.size = facts.stx_size;
    info.modified = facts.stx_mtime.tv_sec;
    info.created = CreationTime(facts);
    return {};
}

IoStatus DiskFileSystem::List(const std::string& folder, std::vector<FolderEntry>& entries) {
    entries.clear();
    const OpenFolder stream(opendir(SystemPath(folder)));
    if (stream == nullptr) {
        return SystemStatus(errno);
    }
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(stream.get());
        if (entry == nullptr) {
            return SystemStatus(errno);
        }
        if (IsDots(entry->d_name)) {
            continue;
        }
        if (entries.size() == m_maxFolderEntries) {
            return {IoError::TooLarge,
                    "more than " + std::to_string(m_maxFolderEntries) + " entries"};
        }
        entries.push_back({entry->d_name, KindOfEntry(*entry, dirfd(stream.get()))});
    }
}

IoStatus DiskFileSystem::Open(const std::string& path, std::unique_ptr<FileReader>& reader) {
    Descriptor file;
    std::uint64_t size = 0;
    IoStatus status = OpenRegular(path, file, size);
    if (status) {
        reader = std::make_unique<DiskFileReader>(std::move(file), size);
    }
    return status;
}

IoStatus DiskFileSystem::Read(const std::string& path, std::uint64_t limit, std::string& content) {
    const std::uint64_t bounded = std::min<std::uint64_t>(limit, content.max_size() - 1);
    IoStatus status = ReadWithin(path, bounded, content);
    if (!status) {
        content.clear();
    }
    return status;
}

IoStatus DiskFileSystem::FreeSpace(const std::string& path, std::uint64_t& bytes) {
    struct statvfs facts = {};
    if (statvfs(SystemPath(path), &facts) != 0) {
        return SystemStatus(errno);
    }
    bytes = BytesOfBlocks(facts.f_bfree, facts.f_frsize);
    return {};
}

IoStatus DiskFileSystem::RemoveFile(const std::string& path) {
    return unlink(SystemPath(path)) == 0 ? IoStatus{} : SystemStatus(errno);
}

IoStatus DiskFileSystem::MakeFolder(const std::string& path) {
    constexpr mode_t kBeforeUmask = 0777;
    return mkdir(SystemPath(path), kBeforeUmask) == 0 ? IoStatus{} : SystemStatus(errno);
}

} // namespace nqp2::platform
