// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk.h"

#include "platform/durable_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

using std::chrono::milliseconds;

IoStatus BadName() {
    return {IoError::Other, "it is not the name of a file or folder"};
}

/// Why a folder could not be opened: where links are refused, the system calls one "no folder".
IoStatus FolderFailure(int above, const char* path, Links links, int errorNumber) {
    FileInfo info;
    if (links == Links::Refuse && (errorNumber == ENOTDIR || errorNumber == ELOOP) &&
        StatAt(above, path, links, info)) {
        return info.kind == EntryKind::Link ? LinkStatus()
                                            : IoStatus{IoError::Other, "it is not a folder"};
    }
    return SystemStatus(errorNumber);
}

IoStatus OpenHandle(int above, const char* path, Links links, FolderPtr& handle) {
    const int flags = O_DIRECTORY | O_CLOEXEC | (links == Links::Refuse ? O_NOFOLLOW : 0);
    Descriptor folder(openat(above, path, O_RDONLY | flags));
    const bool isReadable = static_cast<bool>(folder);
    if (!isReadable && errno == EACCES) {
        folder = Descriptor(openat(above, path, O_PATH | flags));
    }
    if (!folder) {
        return FolderFailure(above, path, links, errno);
    }
    handle = std::make_shared<FolderHandle>(std::move(folder), isReadable);
    return {};
}

IoStatus CheckRegular(int folder, const std::string& name) {
    FileInfo info;
    IoStatus status = StatAt(folder, name.c_str(), Links::Refuse, info);
    return status ? RegularStatus(info.kind) : status;
}

/// Removes a hidden file unless a living process has it open, or waits for it.
IoStatus RemoveIfAbandoned(int folder, const std::string& name) {
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const Descriptor file(openat(folder, name.c_str(), kFlags));
    const bool abandoned = file && LockOpen(file.Get(), LockKind::Alone, milliseconds(0)) &&
                           HasName(file.Get(), folder, name.c_str());
    return abandoned && unlinkat(folder, name.c_str(), 0) != 0 ? SystemStatus(errno) : IoStatus{};
}

class DiskFolder final : public Folder {
public:
    DiskFolder(FolderPtr handle, std::string path, std::size_t maxEntries)
        : m_handle(std::move(handle)), m_path(std::move(path)), m_maxEntries(maxEntries) {}

    [[nodiscard]] const std::string& Path() const override { return m_path; }

    IoStatus OpenFolder(const std::string& name, std::unique_ptr<Folder>& folder) override {
        FolderPtr handle;
        IoStatus status =
            IsEntryName(name) ? OpenHandle(Get(), name.c_str(), Links::Refuse, handle) : BadName();
        if (status) {
            const char* const separator = m_path.ends_with('/') ? "" : "/";
            folder = std::make_unique<DiskFolder>(std::move(handle), m_path + separator + name,
                                                  m_maxEntries);
        }
        return status;
    }

    IoStatus MakeFolder(const std::string& name) override {
        IoStatus status = MakeUnflushed(name);
        if (!status) {
            return status;
        }
        status = m_handle->Flush();
        if (!status) {
            unlinkat(Get(), name.c_str(), AT_REMOVEDIR);
        }
        return status;
    }

    IoStatus MakeUnflushed(const std::string& name) override {
        constexpr mode_t kBeforeUmask = 0777;
        if (!IsEntryName(name)) {
            return BadName();
        }
        return mkdirat(Get(), name.c_str(), kBeforeUmask) == 0 ? IoStatus{} : SystemStatus(errno);
    }

    IoStatus RemoveFolder(const std::string& name) override {
        if (!IsEntryName(name)) {
            return BadName();
        }
        return unlinkat(Get(), name.c_str(), AT_REMOVEDIR) == 0 ? m_handle->Flush()
                                                                : SystemStatus(errno);
    }

    IoStatus Stat(const std::string& name, FileInfo& info) override {
        return IsEntryName(name) ? StatAt(Get(), name.c_str(), Links::Refuse, info) : BadName();
    }

    IoStatus List(std::vector<FolderEntry>& entries) override {
        Descriptor opened(openat(Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!opened) {
            entries.clear();
            return SystemStatus(errno);
        }
        return ListOpen(std::move(opened), Links::Refuse, m_maxEntries, entries);
    }

    IoStatus Open(const std::string& name, std::unique_ptr<FileReader>& reader) override {
        return IsEntryName(name) ? OpenAt(Get(), name.c_str(), Links::Refuse, reader) : BadName();
    }

    IoStatus Read(const std::string& name, std::uint64_t limit, std::string& content) override {
        if (!IsEntryName(name)) {
            content.clear();
            return BadName();
        }
        return ReadAt(Get(), name.c_str(), Links::Refuse, limit, content);
    }

    IoStatus WriteWhole(const std::string& name, std::string_view content) override {
        return IsEntryName(name) ? WriteWholeIn(m_handle, name, content) : BadName();
    }

    IoStatus Create(const std::string& name, std::unique_ptr<FileWriter>& writer) override {
        return IsEntryName(name) ? CreateIn(m_handle, name, writer) : BadName();
    }

    IoStatus RemoveFiles(std::span<const std::string> names, std::string& failed) override {
        IoStatus status;
        const auto note = [&](const std::string& name, IoStatus ended) {
            if (status && !ended) {
                status = std::move(ended);
                failed = name;
            }
        };
        const std::string* last = nullptr;
        for (const std::string& name : names) {
            IoStatus removed = Unlink(name);
            last = removed ? &name : last;
            note(name, std::move(removed));
        }
        if (last != nullptr) {
            note(*last, m_handle->Flush());
        }
        return status;
    }

    IoStatus MoveToFree(const std::string& from, const std::string& to) override {
        if (!IsEntryName(from) || !IsEntryName(to)) {
            return BadName();
        }
        IoStatus status = CheckRegular(Get(), from);
        return status ? MoveToFreeIn(m_handle, from, to) : status;
    }

    IoStatus RemoveAbandoned() override {
        if (!m_handle->BeginSweep()) {
            return {};
        }
        std::vector<FolderEntry> entries;
        IoStatus status = List(entries);
        for (const FolderEntry& entry : entries) {
            if (entry.kind == EntryKind::File && IsLeftoverName(entry.name)) {
                IoStatus removed = RemoveIfAbandoned(Get(), entry.name);
                status = status ? std::move(removed) : status;
            }
        }
        m_handle->EndSweep();
        return status;
    }

    IoStatus Flush() override { return m_handle->Flush(); }
    IoStatus FlushAll() override { return m_handle->FlushAll(); }

    IoStatus KeepTime(const std::string& name, const FileInfo& source) override {
        if (!name.empty() && !IsEntryName(name)) {
            return BadName();
        }
        const char* const entry = name.empty() ? "." : name.c_str();
        const std::array<timespec, 2> times = TimesOf(source);
        return utimensat(Get(), entry, times.data(), AT_SYMLINK_NOFOLLOW) == 0
                   ? IoStatus{}
                   : SystemStatus(errno);
    }

    IoStatus Medium(MediumFacts& facts) override { return MediumOf(Get(), facts); }
    IoStatus IsCaseBlind(bool& isBlind) override { return IsCaseBlindIn(m_handle, isBlind); }

    IoStatus UsableSpace(std::uint64_t& bytes) override {
        struct statvfs facts = {};
        if (fstatvfs(Get(), &facts) != 0) {
            return SystemStatus(errno);
        }
        bytes = BytesOfBlocks(facts.f_bavail, facts.f_frsize);
        return {};
    }

    IoStatus Lock(milliseconds patience) override { return m_handle->LockAlone(patience); }

    IoStatus LockName(const std::string& name, std::unique_ptr<NameLock>& lock) override {
        constexpr milliseconds kASweepersMoment(200);
        return LockNameIn(m_handle, name, kASweepersMoment, lock);
    }

private:
    [[nodiscard]] int Get() const { return m_handle->Get(); }
    [[nodiscard]] IoStatus Unlink(const std::string& name) const {
        IoStatus status = IsEntryName(name) ? CheckRegular(Get(), name) : BadName();
        return status && unlinkat(Get(), name.c_str(), 0) != 0 ? SystemStatus(errno) : status;
    }

    FolderPtr m_handle;
    std::string m_path;
    std::size_t m_maxEntries;
};

} // namespace

IoStatus FolderHandle::Flush() const {
    return m_isReadable ? FlushToMedium(m_folder.Get()) : IoStatus{};
}

IoStatus FolderHandle::FlushAll() const {
    return syncfs(m_folder.Get()) == 0 ? IoStatus{} : SystemStatus(errno);
}

IoStatus FolderHandle::LockAlone(milliseconds patience) {
    if (m_held == Held::Alone || !m_isReadable) {
        return {};
    }
    IoStatus status = LockOpen(m_folder.Get(), LockKind::Alone, patience);
    if (status.error == IoError::Busy) {
        m_held = Held::None; // a shared lock is given up by asking for more
        return status;
    }
    m_held = Held::Alone;
    return {};
}

IoStatus FolderHandle::LockShared() {
    constexpr std::chrono::seconds kLongestSweep(5);
    if (m_held != Held::None || !m_isReadable) {
        return {};
    }
    IoStatus status = LockOpen(m_folder.Get(), LockKind::Shared, kLongestSweep);
    if (status.error == IoError::Busy) {
        return status;
    }
    m_held = Held::Shared;
    return {};
}

bool FolderHandle::BeginSweep() {
    return m_held == Held::Alone || (m_held == Held::None && m_isReadable &&
                                     LockOpen(m_folder.Get(), LockKind::Alone, milliseconds(0)));
}

void FolderHandle::EndSweep() const {
    if (m_held == Held::None) {
        flock(m_folder.Get(), LOCK_UN);
    }
}

IoStatus OpenDiskFolder(const std::string& path, std::size_t maxEntries,
                        std::unique_ptr<Folder>& folder) {
    FolderPtr handle;
    IoStatus status = OpenHandle(AT_FDCWD, SystemPath(path), Links::Follow, handle);
    if (status) {
        folder = std::make_unique<DiskFolder>(std::move(handle), path, maxEntries);
    }
    return status;
}

} // namespace nqp2::platform
