// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/case_blind.h"
#include "platform/descriptor.h"
#include "platform/disk_file_system.h"
#include "platform/durable_file.h"
#include "platform/system_status.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

constexpr mode_t kNewFileMode = 0666; // before umask
constexpr mode_t kPermissionBits = 0777;

/// A file to write: the folder that holds it, its name there and the permission bits of the file
/// that stands there already.
struct Target {
    std::string folder;
    std::string name;
    std::optional<mode_t> mode;
};

Target SplitTarget(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return {".", path, {}};
    }
    return {path.substr(0, slash + 1), path.substr(slash + 1), {}};
}

/// What a link says, seen from the link's own folder; empty when the path is no link.
std::string LinkTarget(const std::string& path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = readlink(path.c_str(), text.data(), text.size());
    if (length <= 0) {
        return {};
    }
    const std::string_view target(text.data(), static_cast<std::size_t>(length));
    const bool relative = target.front() != '/';
    return (relative ? path.substr(0, path.find_last_of('/') + 1) : "").append(target);
}

/// The path behind links at its end, whether a file stands there yet or not.
IoStatus FollowLinks(std::string& path) {
    constexpr int kMostLinks = 40; // as the kernel follows
    for (int followed = 0; followed <= kMostLinks; ++followed) {
        std::string next = LinkTarget(path);
        if (next.empty()) {
            return {};
        }
        path = std::move(next);
    }
    return SystemStatus(ELOOP);
}

/// The rename would replace what a plain write could not open: a write-protected file is
/// respected all the same.
IoStatus CheckReplaceable(const std::string& path, const struct stat& facts) {
    if (S_ISDIR(facts.st_mode)) {
        return SystemStatus(EISDIR);
    }
    if (!S_ISREG(facts.st_mode)) {
        return {IoError::NotAFile, "not a regular file"};
    }
    const bool writable = faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
    return writable ? IoStatus{} : SystemStatus(errno);
}

IoStatus ResolveTarget(std::string path, Target& target) {
    IoStatus status = FollowLinks(path);
    if (!status) {
        return status;
    }
    struct stat facts = {};
    const int failure = stat(path.c_str(), &facts) == 0 ? 0 : errno;
    target = SplitTarget(path);
    if (failure == 0) {
        target.mode = facts.st_mode & kPermissionBits;
        return CheckReplaceable(path, facts);
    }
    const bool makeable = failure == ENOENT && !target.name.empty();
    return makeable ? IoStatus{} : SystemStatus(failure);
}

IoStatus WriteAll(int file, std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = write(file, content.data(), content.size());
        if (written > 0) {
            content.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0) {
            return SystemStatus(EIO); // no progress and no error: never spin
        } else if (errno != EINTR) {
            return SystemStatus(errno);
        }
    }
    return {};
}

/// A second name that replaces nothing, in place of the first. Whatever stops the program in
/// between, what has the new name is whole.
bool MoveByLink(const char* source, const char* target) {
    if (link(source, target) != 0) {
        return false;
    }
    if (unlink(source) == 0) {
        return true;
    }
    const int failure = errno;
    unlink(target);
    errno = failure;
    return false;
}

/// For file systems that have neither the one nor the other: of several writers, the one whose empty
/// file comes first has the name.
IoStatus MoveOverOwnClaim(const char* source, const char* target) {
    const Descriptor claim(open(target, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode));
    if (!claim) {
        return SystemStatus(errno);
    }
    if (rename(source, target) == 0) {
        return {};
    }
    IoStatus status = SystemStatus(errno);
    unlink(target);
    return status;
}

IoStatus MoveReplacingNothing(const char* source, const char* target) {
    if (renameat2(AT_FDCWD, source, AT_FDCWD, target, RENAME_NOREPLACE) == 0) {
        return {};
    }
    const bool unsupported = errno == EINVAL || errno == ENOSYS;
    if (!unsupported) {
        return SystemStatus(errno);
    }
    if (MoveByLink(source, target)) {
        return {};
    }
    return errno == EEXIST ? SystemStatus(errno) : MoveOverOwnClaim(source, target);
}

/// The new content beside its target; taken away again unless it takes the target's place.
class Replacement {
public:
    explicit Replacement(const Target& target) : m_target(target) {}
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    ~Replacement() {
        if (!m_name.empty()) {
            unlinkat(m_folder.Get(), m_name.c_str(), 0);
        }
    }

    /// Makes the empty temporary file.
    IoStatus Create() {
        m_folder = Descriptor(open(m_target.folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!m_folder) {
            return SystemStatus(errno);
        }
        constexpr int kTries = 16;
        for (int tried = 0; tried < kTries; ++tried) {
            const std::string name = TemporaryName(kReplacementEnding);
            if (name.empty()) {
                return SystemStatus(errno);
            }
            if (CreateNamed(name)) {
                return {};
            }
            if (errno != EEXIST && errno != EINTR) {
                return SystemStatus(errno);
            }
        }
        return SystemStatus(EEXIST);
    }

    /// Fills the temporary file and brings it onto the medium.
    IoStatus Fill(std::string_view content) {
        if (IoStatus status = WriteAll(m_file.Get(), content); !status) {
            return status;
        }
        if (IoStatus status = FlushToMedium(m_file.Get()); !status) {
            return status;
        }
        return SystemStatus(m_file.Close());
    }

    /// Puts the file in the target's place and brings the folder's change onto the medium.
    IoStatus Commit() {
        if (renameat(m_folder.Get(), m_name.c_str(), m_folder.Get(), m_target.name.c_str()) != 0) {
            return SystemStatus(errno);
        }
        m_name.clear();
        return FlushFolder(m_folder.Get());
    }

private:
    bool CreateNamed(const std::string& name) {
        constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
        const mode_t mode = m_target.mode.value_or(kNewFileMode);
        m_file = Descriptor(openat(m_folder.Get(), name.c_str(), kNewFile, mode));
        if (!m_file) {
            return false;
        }
        m_name = name;
        if (!ClaimTemporary(m_file.Get())) {
            m_name.clear();
            errno = EEXIST;
            return false;
        }
        m_claim = Descriptor(fcntl(m_file.Get(), F_DUPFD_CLOEXEC, 0));
        if (m_target.mode) {
            // Gives back what umask took. Cards without permission bits refuse: nothing is lost.
            static_cast<void>(fchmod(m_file.Get(), mode));
        }
        return true;
    }

    const Target& m_target;
    Descriptor m_folder;
    Descriptor m_file;
    Descriptor m_claim; ///< keeps the claim until the file has its name
    std::string m_name;
};

} // namespace

IoStatus DiskFileSystem::WriteWhole(const std::string& path, std::string_view content) {
    Target target;
    IoStatus status = ResolveTarget(SystemPath(FindTarget(*this, path)), target);
    if (!status) {
        return status;
    }
    Replacement replacement(target);
    if (status = replacement.Create(); !status) {
        return status;
    }
    if (status = replacement.Fill(content); !status) {
        return status;
    }
    return replacement.Commit();
}

IoStatus DiskFileSystem::MoveToFree(const std::string& from, const std::string& to) {
    IoStatus status = MoveReplacingNothing(SystemPath(from), SystemPath(to));
    if (!status) {
        return status;
    }
    const Descriptor folder(open(SplitTarget(to).folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    status = folder ? FlushFolder(folder.Get()) : SystemStatus(errno);
    if (!status) {
        // A failure must not leave the new name behind, which the caller would not look for.
        static_cast<void>(MoveReplacingNothing(SystemPath(to), SystemPath(from)));
    }
    return status;
}

} // namespace nqp2::platform
