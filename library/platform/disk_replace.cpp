// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/disk_writer.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace nqp2::platform {
namespace {

constexpr mode_t kPermissionBits = 0777;

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
