// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk.h"
#include "platform/durable_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr std::uint64_t kMostBytes = std::numeric_limits<off_t>::max();
constexpr mode_t kNewFileMode = 0666; // before umask
constexpr mode_t kPermissionBits = 0777;

/// A hidden name, or none; the file behind it goes with this object.
class HiddenName {
public:
    explicit HiddenName(FolderPtr folder) : m_folder(std::move(folder)) {}
    HiddenName(const HiddenName&) = delete;
    HiddenName& operator=(const HiddenName&) = delete;
    ~HiddenName() {
        if (!m_name.empty()) {
            unlinkat(m_folder->Get(), m_name.c_str(), 0);
        }
    }

    /// Lets `make` make a file under a fresh name; it returns false with the reason in errno,
    /// where EEXIST asks for another name.
    template <class Make>
    IoStatus Take(Make make) {
        constexpr int kTries = 16;
        for (int tried = 0; tried < kTries; ++tried) {
            std::string name = TemporaryName();
            if (name.empty()) {
                return SystemStatus(errno);
            }
            if (make(name.c_str())) {
                m_name = std::move(name);
                return {};
            }
            if (errno != EEXIST && errno != EINTR) {
                return SystemStatus(errno);
            }
        }
        return SystemStatus(EEXIST);
    }
    [[nodiscard]] const std::string& Get() const { return m_name; }
    /// Leaves the file alone: it has another name now.
    void Drop() { m_name.clear(); }

    /// Puts the file in the place of what has the name.
    IoStatus Replace(const std::string& name) {
        if (renameat(m_folder->Get(), m_name.c_str(), m_folder->Get(), name.c_str()) != 0) {
            return SystemStatus(errno);
        }
        Drop();
        return {};
    }

private:
    FolderPtr m_folder;
    std::string m_name;
};

class DiskFileWriter final : public FileWriter {
public:
    DiskFileWriter(FolderPtr folder, std::string name)
        : m_folder(std::move(folder)), m_name(std::move(name)), m_hidden(m_folder) {}

    IoStatus Begin() {
        return m_hidden.Take([&](const char* name) { return BeginNamed(name); });
    }

    IoStatus WriteAt(std::uint64_t position, std::string_view bytes) override {
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

    IoStatus Resize(std::uint64_t size) override {
        if (!Fits(size, 0)) {
            return SystemStatus(EFBIG);
        }
        return ftruncate(m_file.Get(), static_cast<off_t>(size)) == 0 ? IoStatus{}
                                                                      : SystemStatus(errno);
    }

    IoStatus KeepTime(const FileInfo& source) override {
        const timespec times[] = {{0, UTIME_OMIT},
                                  {source.modified, static_cast<long>(source.modifiedNanoseconds)}};
        return futimens(m_file.Get(), times) == 0 ? IoStatus{} : SystemStatus(errno);
    }

    IoStatus Flush() override {
        IoStatus status = FlushToMedium(m_file.Get());
        if (status) {
            // Advice: a file system that keeps its files in memory alone has no medium to ask.
            static_cast<void>(posix_fadvise(m_file.Get(), 0, 0, POSIX_FADV_DONTNEED));
            static_cast<void>(posix_fadvise(m_file.Get(), 0, 0, POSIX_FADV_SEQUENTIAL));
        }
        return status;
    }

    IoStatus ReadAt(std::uint64_t position, char* buffer, std::size_t capacity,
                    std::size_t& count) override {
        ssize_t got = -1;
        do {
            got = pread(m_file.Get(), buffer, std::min<std::size_t>(capacity, SSIZE_MAX),
                        static_cast<off_t>(std::min(position, kMostBytes)));
        } while (got < 0 && errno == EINTR);
        count = static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        return got < 0 ? SystemStatus(errno) : IoStatus{};
    }

    IoStatus Close() override {
        IoStatus status = m_folder->LockShared();
        return status ? SystemStatus(m_file.Close()) : status;
    }

    IoStatus Commit() override { return CommitAs(m_name); }

    IoStatus CommitAs(const std::string& name) override {
        // Still open or in a shared folder, which tells until then that it is in the making.
        IoStatus status =
            IsEntryName(name) ? MoveToFreeIn(m_folder, m_hidden.Get(), name) : SystemStatus(ENOENT);
        if (status) {
            m_hidden.Drop();
        }
        return status;
    }

    /// Gives back what umask took. Cards without permission bits refuse: nothing is lost.
    void SetMode(mode_t mode) { static_cast<void>(fchmod(m_file.Get(), mode)); }

    /// Puts the file in the place of what has its name.
    IoStatus Replace() { return m_hidden.Replace(m_name); }

private:
    static bool Fits(std::uint64_t position, std::uint64_t size) {
        return size <= kMostBytes && position <= kMostBytes - size &&
               FitsFileSizeLimit(position + size);
    }

    bool BeginNamed(const char* name) {
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

    /// Keeps the medium busy while the next bytes are read, so that the flush has little left.
    void StartWriteOut(std::uint64_t end) {
        constexpr std::uint64_t kPiece = 8U << 20U;
        if (end >= m_started + kPiece) {
            static_cast<void>(sync_file_range(m_file.Get(), static_cast<off_t>(m_started),
                                              static_cast<off_t>(end - m_started),
                                              SYNC_FILE_RANGE_WRITE));
            m_started = end;
        }
    }

    FolderPtr m_folder;
    std::string m_name;
    Descriptor m_file;
    HiddenName m_hidden;
    std::uint64_t m_started = 0; ///< bytes whose way to the medium has begun
};

/// The file that is to be replaced, if there is one.
class OldFile {
public:
    OldFile(FolderPtr folder, std::string name)
        : m_folder(std::move(folder)), m_name(std::move(name)), m_second(m_folder) {}

    /// Fails for what must not be replaced. The rename would replace what a plain write could not
    /// open: a write-protected file is respected all the same.
    IoStatus Look() {
        struct stat facts = {};
        if (fstatat(m_folder->Get(), m_name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) {
            return errno == ENOENT ? IoStatus{} : SystemStatus(errno);
        }
        FileInfo info;
        IoStatus status = StatAt(m_folder->Get(), m_name.c_str(), Links::Refuse, info);
        status = status ? RegularStatus(info.kind) : status;
        constexpr int kAsThisUser = AT_EACCESS | AT_SYMLINK_NOFOLLOW;
        if (status && faccessat(m_folder->Get(), m_name.c_str(), W_OK, kAsThisUser) != 0) {
            status = SystemStatus(errno);
        }
        m_mode = facts.st_mode & kPermissionBits;
        return status;
    }
    [[nodiscard]] std::optional<mode_t> Mode() const { return m_mode; }

    /// Makes sure that it can be put back: by a second name, or where there are none by keeping it
    /// open.
    void Hold() {
        constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        if (!m_mode) {
            return;
        }
        m_file = Descriptor(openat(m_folder->Get(), m_name.c_str(), kFlags));
        if (m_file) { // the lock tells sweepers that the second name is in use
            static_cast<void>(
                LockOpen(m_file.Get(), LockKind::Alone, std::chrono::milliseconds(0)));
        }
        static_cast<void>(m_second.Take([&](const char* second) {
            return linkat(m_folder->Get(), m_name.c_str(), m_folder->Get(), second, 0) == 0;
        }));
    }

    /// Undoes a replacement as far as the medium lets it.
    void PutBack() {
        if (!m_mode) {
            unlinkat(m_folder->Get(), m_name.c_str(), 0);
        } else if (!m_second.Get().empty()) {
            if (!m_second.Replace(m_name)) {
                m_second.Drop(); // the last name that it has
            }
        } else if (m_file) {
            static_cast<void>(CopyBack());
        }
        static_cast<void>(m_folder->Flush());
    }

private:
    IoStatus CopyBack() {
        DiskFileWriter copy(m_folder, m_name);
        IoStatus status = copy.Begin();
        std::string block(1U << 20U, '\0');
        std::uint64_t position = 0;
        while (status) {
            const ssize_t got =
                pread(m_file.Get(), block.data(), block.size(), static_cast<off_t>(position));
            if (got <= 0) {
                status = got < 0 ? SystemStatus(errno) : status;
                break;
            }
            const auto count = static_cast<std::size_t>(got);
            status = copy.WriteAt(position, std::string_view(block).substr(0, count));
            position += count;
        }
        if (status) {
            copy.SetMode(*m_mode);
            static_cast<void>(copy.Flush());
            status = copy.Replace();
        }
        return status;
    }

    FolderPtr m_folder;
    std::string m_name;
    std::optional<mode_t> m_mode; ///< none without a file
    Descriptor m_file;
    HiddenName m_second;
};

} // namespace

IoStatus CreateIn(const FolderPtr& folder, const std::string& name,
                  std::unique_ptr<FileWriter>& writer) {
    auto made = std::make_unique<DiskFileWriter>(folder, name);
    IoStatus status = made->Begin();
    if (status) {
        writer = std::move(made);
    }
    return status;
}

IoStatus WriteWholeIn(const FolderPtr& folder, const std::string& name, std::string_view content) {
    OldFile old(folder, name);
    DiskFileWriter writer(folder, name);
    IoStatus status = old.Look();
    if (status) {
        status = writer.Begin();
    }
    if (status) {
        status = writer.WriteAt(0, content);
    }
    if (status && old.Mode()) {
        writer.SetMode(*old.Mode());
    }
    if (status) {
        status = writer.Flush();
    }
    if (!status) {
        return status;
    }
    old.Hold();
    status = writer.Replace();
    if (status) {
        status = folder->Flush();
        if (!status) {
            old.PutBack();
        }
    }
    return status;
}

} // namespace nqp2::platform
