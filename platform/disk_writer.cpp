// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/descriptor.h"
#include "platform/disk_file_system.h"
#include "platform/durable_file.h"
#include "platform/system_status.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <limits>
#include <memory>
#include <unistd.h>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr std::string_view kEnding = ".part";
constexpr std::uint64_t kMostBytes = std::numeric_limits<off_t>::max();

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

class DiskFileWriter final : public FileWriter {
public:
    DiskFileWriter(FileSystem& files, std::string path)
        : m_files(files), m_path(std::move(path)), m_folder(FolderOf(m_path)) {}
    DiskFileWriter(const DiskFileWriter&) = delete;
    DiskFileWriter& operator=(const DiskFileWriter&) = delete;
    ~DiskFileWriter() override {
        if (!m_temporary.empty()) {
            unlink(m_temporary.c_str());
        }
    }

    IoStatus Begin() {
        constexpr int kTries = 16;
        for (int tried = 0; tried < kTries; ++tried) {
            const std::string name = TemporaryName(kEnding);
            if (name.empty()) {
                return SystemStatus(errno);
            }
            if (BeginNamed(m_folder + name)) {
                return {};
            }
            if (errno != EEXIST && errno != EINTR) {
                return SystemStatus(errno);
            }
        }
        return SystemStatus(EEXIST);
    }

    IoStatus WriteAt(std::uint64_t position, std::string_view bytes) override {
        if (position > kMostBytes - bytes.size()) {
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
        if (size > kMostBytes) {
            return SystemStatus(EFBIG);
        }
        return ftruncate(m_file.Get(), static_cast<off_t>(size)) == 0 ? IoStatus{}
                                                                      : SystemStatus(errno);
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

    IoStatus Commit() override {
        // Still open, so that its lock tells until then that it is in the making.
        IoStatus status = m_files.MoveToFree(m_temporary, m_path);
        if (status) {
            m_temporary.clear();
        }
        return status;
    }

private:
    /// False with the reason in errno; EEXIST asks for another name.
    bool BeginNamed(const std::string& path) {
        constexpr mode_t kBeforeUmask = 0666;
        constexpr int kNewFile = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        m_file = Descriptor(open(path.c_str(), kNewFile, kBeforeUmask));
        if (!m_file) {
            return false;
        }
        m_temporary = path;
        if (!ClaimTemporary(m_file.Get())) {
            m_temporary.clear();
            errno = EEXIST;
            return false;
        }
        return true;
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

    FileSystem& m_files;
    std::string m_path;
    std::string m_folder;
    std::string m_temporary;
    Descriptor m_file;
    std::uint64_t m_started = 0; ///< bytes whose way to the medium has begun
};

bool IsInTheMaking(std::string_view name) {
    return name.starts_with(kTemporaryPrefix) &&
           (name.ends_with(kEnding) || name.ends_with(kReplacementEnding));
}

} // namespace

IoStatus DiskFileSystem::Create(const std::string& path, std::unique_ptr<FileWriter>& writer) {
    auto made = std::make_unique<DiskFileWriter>(*this, SystemPath(path));
    IoStatus status = path.empty() ? SystemStatus(ENOENT) : made->Begin();
    if (status) {
        writer = std::move(made);
    }
    return status;
}

IoStatus DiskFileSystem::RemoveAbandoned(const std::string& folder) {
    std::vector<FolderEntry> entries;
    IoStatus status = List(folder, entries);
    for (const FolderEntry& entry : entries) {
        if (entry.kind != EntryKind::File || !IsInTheMaking(entry.name)) {
            continue;
        }
        const std::string path = folder + "/" + entry.name;
        const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (file && IsAbandoned(file.Get()) && unlink(path.c_str()) != 0) {
            status = SystemStatus(errno);
        }
    }
    return status;
}

} // namespace nqp2::platform
