// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/case_fold.h"
#include "platform/disk.h"
#include "platform/durable_file.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace nqp2::platform {
namespace {

/// The lock on a hidden file, which is removed by who holds it.
class DiskNameLock final : public NameLock {
public:
    DiskNameLock(FolderPtr folder, std::string file)
        : m_folder(std::move(folder)), m_file(std::move(file)) {}
    DiskNameLock(const DiskNameLock&) = delete;
    DiskNameLock& operator=(const DiskNameLock&) = delete;
    ~DiskNameLock() override {
        if (m_isHeld) {
            unlinkat(m_folder->Get(), m_file.c_str(), 0);
        }
    }

    /// Success, and not held, tells that the file was another's that is gone by now.
    IoStatus TryHold(std::chrono::milliseconds patience) {
        constexpr int kFlags = O_RDONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        constexpr mode_t kBeforeUmask = 0666;
        m_open = Descriptor(openat(m_folder->Get(), m_file.c_str(), kFlags, kBeforeUmask));
        if (!m_open) {
            return errno == ELOOP ? LinkStatus() : SystemStatus(errno);
        }
        IoStatus status = LockOpen(m_open.Get(), LockKind::Alone, patience);
        if (status.error == IoError::Busy) {
            return status;
        }
        m_isHeld = HasName(m_open.Get(), m_folder->Get(), m_file.c_str());
        return {};
    }
    [[nodiscard]] bool IsHeld() const { return m_isHeld; }

private:
    FolderPtr m_folder;
    std::string m_file;
    Descriptor m_open;
    bool m_isHeld = false;
};

/// A short hidden name that is the same for all spellings of a name, in every process.
std::string LockFileName(const std::string& name) {
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    for (const char byte : FoldNameCase(name)) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
    std::array<char, 20> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(hash));
    return std::string(kTemporaryPrefix).append(digits.data()).append(kLockEnding);
}

/// A second name that replaces nothing, in place of the first. Whatever stops the program in
/// between, what has the new name is whole.
bool MoveByLink(int folder, const char* from, const char* to) {
    if (linkat(folder, from, folder, to, 0) != 0) {
        return false;
    }
    if (unlinkat(folder, from, 0) == 0) {
        return true;
    }
    const int failure = errno;
    unlinkat(folder, to, 0);
    errno = failure;
    return false;
}

/// For file systems that have neither the one nor the other: of several writers of ours, the one
/// that holds the lock on the name looks and takes it. Another program could still come in between
/// the two; in exchange, nothing but the whole file ever has the name.
IoStatus MoveUnderLock(const FolderPtr& folder, const char* from, const char* to) {
    std::unique_ptr<NameLock> lock;
    // No name of an entry, so that it is no other lock's file.
    IoStatus status = LockNameIn(folder, std::string(to) + "/", std::chrono::seconds(5), lock);
    if (!status) {
        return status;
    }
    FileInfo info;
    status = StatAt(folder->Get(), to, Links::Refuse, info);
    if (status.error != IoError::NotFound) {
        return status ? SystemStatus(EEXIST) : status;
    }
    return renameat(folder->Get(), from, folder->Get(), to) == 0 ? IoStatus{} : SystemStatus(errno);
}

IoStatus MoveReplacingNothing(const FolderPtr& folder, const char* from, const char* to) {
    if (renameat2(folder->Get(), from, folder->Get(), to, RENAME_NOREPLACE) == 0) {
        return {};
    }
    const bool unsupported = errno == EINVAL || errno == ENOSYS;
    if (!unsupported) {
        return SystemStatus(errno);
    }
    if (MoveByLink(folder->Get(), from, to)) {
        return {};
    }
    return errno == EEXIST ? SystemStatus(errno) : MoveUnderLock(folder, from, to);
}

} // namespace

IoStatus LockNameIn(const FolderPtr& folder, const std::string& name,
                    std::chrono::milliseconds patience, std::unique_ptr<NameLock>& lock) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    do {
        auto tried = std::make_unique<DiskNameLock>(folder, LockFileName(name));
        IoStatus status = tried->TryHold(std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now()));
        if (!status) {
            return status;
        }
        if (tried->IsHeld()) {
            lock = std::move(tried);
            return {};
        }
    } while (std::chrono::steady_clock::now() < deadline);
    return {IoError::Busy, "somebody else is using it"};
}

IoStatus MoveToFreeIn(const FolderPtr& folder, const std::string& from, const std::string& to,
                      NamesFlushed flushed) {
    IoStatus status = MoveReplacingNothing(folder, from.c_str(), to.c_str());
    if (!status || flushed == NamesFlushed::Later) {
        return status;
    }
    status = folder->Flush();
    if (!status) {
        // A failure must not leave the new name behind, which the caller would not look for.
        static_cast<void>(MoveReplacingNothing(folder, to.c_str(), from.c_str()));
    }
    return status;
}

} // namespace nqp2::platform
