// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_writer.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr std::uint64_t kMostBytes = std::numeric_limits<off_t>::max();
constexpr mode_t kNewFileMode = 0666; // before umask

bool Fits(std::uint64_t position, std::uint64_t size) {
    return size <= kMostBytes && position <= kMostBytes - size &&
           FitsFileSizeLimit(position + size);
}

} // namespace

std::array<timespec, 2> TimesOf(const FileInfo& source) {
    return {{{0, UTIME_OMIT}, {source.modified, static_cast<long>(source.modifiedNanoseconds)}}};
}

IoStatus DiskFileWriter::Begin() {
    return m_hidden.Take([&](const char* name) { return BeginNamed(name); });
}

IoStatus DiskFileWriter::WriteAt(std::uint64_t position, std::string_view bytes) {
    if (!Fits(position, bytes.size())) {
        return SystemStatus(EFBIG);
    }
    while (!bytes.empty()) {
        const ssize_t written =
            pwrite(m_file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (written == 0) {
            return SystemStatus(EIO); // no progress and no error: never spin
        }
        if (written < 0 && errno != EINTR) {
            return SystemStatus(errno);
        }
        const auto count = static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        bytes.remove_prefix(count);
        position += count;
    }
    StartWriteOut(position);
    return {};
}

IoStatus DiskFileWriter::Resize(std::uint64_t size) {
    if (!Fits(size, 0)) {
        return SystemStatus(EFBIG);
    }
    return ftruncate(m_file.Get(), static_cast<off_t>(size)) == 0 ? IoStatus{}
                                                                  : SystemStatus(errno);
}

IoStatus DiskFileWriter::KeepTime(const FileInfo& source) {
    return futimens(m_file.Get(), TimesOf(source).data()) == 0 ? IoStatus{} : SystemStatus(errno);
}

IoStatus DiskFileWriter::Flush() {
    IoStatus status = FlushToMedium(m_file.Get());
    if (status) {
        LetGo();
    }
    return status;
}

/// Advice: a file system that keeps its files in memory alone has no medium to ask.
void DiskFileWriter::LetGo() {
    static_cast<void>(posix_fadvise(m_file.Get(), 0, 0, POSIX_FADV_DONTNEED));
    static_cast<void>(posix_fadvise(m_file.Get(), 0, 0, POSIX_FADV_SEQUENTIAL));
}

IoStatus DiskFileWriter::ReadAt(std::uint64_t position, char* buffer, std::size_t capacity,
                                std::size_t& count) {
    ssize_t got = -1;
    do {
        got = pread(m_file.Get(), buffer, std::min<std::size_t>(capacity, SSIZE_MAX),
                    static_cast<off_t>(std::min(position, kMostBytes)));
    } while (got < 0 && errno == EINTR);
    count = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    return got < 0 ? SystemStatus(errno) : IoStatus{};
}

IoStatus DiskFileWriter::Close() {
    IoStatus status = m_folder->LockShared();
    return status ? SystemStatus(m_file.Close()) : status;
}

IoStatus DiskFileWriter::Commit() {
    return CommitAs(m_name);
}

IoStatus DiskFileWriter::CommitAs(const std::string& name) {
    return MoveTo(name, NamesFlushed::Now);
}

IoStatus DiskFileWriter::CommitUnflushed() {
    return MoveTo(m_name, NamesFlushed::Later);
}

/// Still open or in a shared folder, which tells until then that it is in the making.
IoStatus DiskFileWriter::MoveTo(const std::string& name, NamesFlushed flushed) {
    IoStatus status = IsEntryName(name) ? MoveToFreeIn(m_folder, m_hidden.Get(), name, flushed)
                                        : SystemStatus(ENOENT);
    if (status) {
        m_hidden.Drop();
    }
    return status;
}

void DiskFileWriter::SetMode(mode_t mode) {
    static_cast<void>(fchmod(m_file.Get(), mode));
}

bool DiskFileWriter::IsFoundInCapitals() const {
    std::string capitals = m_hidden.Get();
    std::transform(capitals.begin(), capitals.end(), capitals.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return HasName(m_file.Get(), m_folder->Get(), capitals.c_str());
}

bool DiskFileWriter::BeginNamed(const char* name) {
    constexpr int kNewFile = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    constexpr std::chrono::seconds kLongestSweep(5);
    m_file = Descriptor(openat(m_folder->Get(), name, kNewFile, kNewFileMode));
    if (!m_file) {
        return false;
    }
    // A sweeper that came before the lock has taken the file away by now, or lets it be.
    static_cast<void>(LockOpen(m_file.Get(), LockKind::Alone, kLongestSweep));
    struct stat facts = {};
    const bool isThere = fstatat(m_folder->Get(), name, &facts, AT_SYMLINK_NOFOLLOW) == 0;
    errno = EEXIST; // another name, if it was taken away
    return isThere;
}

void DiskFileWriter::StartWriteOut(std::uint64_t end) {
    constexpr std::uint64_t kPiece = 8U << 20U;
    if (end >= m_started + kPiece) {
        static_cast<void>(sync_file_range(m_file.Get(), static_cast<off_t>(m_started),
                                          static_cast<off_t>(end - m_started),
                                          SYNC_FILE_RANGE_WRITE));
        m_started = end;
    }
}

IoStatus CreateIn(const FolderPtr& folder, const std::string& name,
                  std::unique_ptr<FileWriter>& writer) {
    auto made = std::make_unique<DiskFileWriter>(folder, name);
    IoStatus status = made->Begin();
    if (status) {
        writer = std::move(made);
    }
    return status;
}

IoStatus IsCaseBlindIn(const FolderPtr& folder, bool& isBlind) {
    DiskFileWriter tried(folder, "");
    IoStatus status = tried.Begin();
    isBlind = status && tried.IsFoundInCapitals();
    return status;
}

} // namespace nqp2::platform
