// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/folder.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace nqp2::test {

/// ReadBlock is FileReader::Read, WriteAt to Commit those of FileWriter, of a file that was opened
/// through the faulty file system. Folder's operations count as those of FileSystem, under the path
/// that the folder was opened by and the name.
enum class Operation {
    Stat,
    List,
    Open,
    Read,
    ReadBlock,
    WriteWhole,
    FreeSpace,
    RemoveFile,
    MoveToFree,
    MakeFolder,
    RemoveFolder,
    Create,
    WriteAt,
    Flush,
    ReadAt,
    Commit,
    RemoveAbandoned,
    OpenFolder,
    Lock, ///< and LockName
};
inline constexpr std::size_t kOperations = 19;

/// Which calls fail and how. The defaults match every call.
struct Fault {
    platform::IoError error = platform::IoError::Device;
    std::optional<Operation> operation = {};
    std::string pathPart = {};                                       ///< occurs in the path
    std::uint64_t skip = 0;                                          ///< matching calls let through
    std::uint64_t times = std::numeric_limits<std::uint64_t>::max(); ///< failures, then healed
    std::size_t keptEntries = 0; ///< entries that a failing List still delivers
};

/// A file system that counts, delays and fails calls before they reach another one.
/// Safe from several threads.
class FaultyFileSystem final : public platform::FileSystem {
public:
    /// Called before an operation, for example to take the medium away in the middle.
    using Hook = std::function<void(Operation, const std::string& path)>;

    explicit FaultyFileSystem(platform::FileSystem& inner = platform::DiskFiles())
        : m_inner(inner) {}

    void Fail(Fault fault) {
        const std::lock_guard guard(m_lock);
        m_faults.push_back(std::move(fault));
    }
    void HealAll() {
        const std::lock_guard guard(m_lock);
        m_faults.clear();
    }
    void SetHook(Hook hook) {
        const std::lock_guard guard(m_lock);
        m_hook = std::move(hook);
    }
    /// Lets the medium have that much free space.
    void SetFreeSpace(std::uint64_t bytes) { m_freeBytes = bytes; }
    /// Lets each call of one kind take at least this long, as slow media do.
    void SetDelay(Operation operation, std::chrono::microseconds delay) {
        m_delays[Slot(operation)] = delay.count();
    }
    void SetDelay(std::chrono::microseconds delay) {
        for (auto& each : m_delays) {
            each = delay.count();
        }
    }

    [[nodiscard]] std::uint64_t Calls(Operation operation) const {
        return m_calls[Slot(operation)];
    }
    [[nodiscard]] std::uint64_t Calls() const {
        std::uint64_t sum = 0;
        for (const auto& each : m_calls) {
            sum += each;
        }
        return sum;
    }
    void ResetCalls() {
        for (auto& each : m_calls) {
            each = 0;
        }
    }

    platform::IoStatus Stat(const std::string& path, platform::FileInfo& info) override {
        platform::IoStatus status = Enter(Operation::Stat, path);
        return status ? m_inner.Stat(path, info) : status;
    }
    platform::IoStatus List(const std::string& folder,
                            std::vector<platform::FolderEntry>& entries) override {
        std::size_t kept = 0;
        platform::IoStatus status = Enter(Operation::List, folder, &kept);
        return Listed(status, kept, entries, [&] { return m_inner.List(folder, entries); });
    }
    platform::IoStatus Open(const std::string& path,
                            std::unique_ptr<platform::FileReader>& reader) override {
        platform::IoStatus status = Enter(Operation::Open, path);
        if (status) {
            status = m_inner.Open(path, reader);
        }
        if (status) {
            reader = std::make_unique<Reader>(*this, path, std::move(reader));
        }
        return status;
    }
    platform::IoStatus Read(const std::string& path, std::uint64_t limit,
                            std::string& content) override {
        platform::IoStatus status = Enter(Operation::Read, path);
        if (!status) {
            content.clear();
        }
        return status ? m_inner.Read(path, limit, content) : status;
    }
    platform::IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) override {
        platform::IoStatus status = Enter(Operation::FreeSpace, path);
        if (status) {
            status = m_inner.FreeSpace(path, bytes);
        }
        bytes = m_freeBytes.value_or(bytes);
        return status;
    }
    platform::IoStatus OpenFolder(const std::string& path,
                                  std::unique_ptr<platform::Folder>& folder) override {
        platform::IoStatus status = Enter(Operation::OpenFolder, path);
        if (status) {
            status = m_inner.OpenFolder(path, folder);
        }
        if (status) {
            folder = std::make_unique<Below>(*this, std::move(folder));
        }
        return status;
    }

private:
    class Writer final : public platform::FileWriter {
    public:
        Writer(FaultyFileSystem& owner, std::string path,
               std::unique_ptr<platform::FileWriter> inner)
            : m_owner(owner), m_path(std::move(path)), m_inner(std::move(inner)) {}
        platform::IoStatus WriteAt(std::uint64_t position, std::string_view bytes) override {
            platform::IoStatus status = m_owner.Enter(Operation::WriteAt, m_path);
            return status ? m_inner->WriteAt(position, bytes) : status;
        }
        platform::IoStatus Resize(std::uint64_t size) override { return m_inner->Resize(size); }
        platform::IoStatus KeepTime(const platform::FileInfo& source) override {
            return m_inner->KeepTime(source);
        }
        platform::IoStatus Close() override { return m_inner->Close(); }
        platform::IoStatus Flush() override {
            platform::IoStatus status = m_owner.Enter(Operation::Flush, m_path);
            return status ? m_inner->Flush() : status;
        }
        platform::IoStatus ReadAt(std::uint64_t position, char* buffer, std::size_t capacity,
                                  std::size_t& count) override {
            count = 0;
            platform::IoStatus status = m_owner.Enter(Operation::ReadAt, m_path);
            return status ? m_inner->ReadAt(position, buffer, capacity, count) : status;
        }
        platform::IoStatus Commit() override {
            platform::IoStatus status = m_owner.Enter(Operation::Commit, m_path);
            return status ? m_inner->Commit() : status;
        }
        platform::IoStatus CommitAs(const std::string& name) override {
            platform::IoStatus status = m_owner.Enter(Operation::Commit, m_path);
            return status ? m_inner->CommitAs(name) : status;
        }

    private:
        FaultyFileSystem& m_owner;
        std::string m_path;
        std::unique_ptr<platform::FileWriter> m_inner;
    };

    class Below final : public platform::Folder {
    public:
        Below(FaultyFileSystem& owner, std::unique_ptr<platform::Folder> inner)
            : m_owner(owner), m_inner(std::move(inner)) {}
        [[nodiscard]] const std::string& Path() const override { return m_inner->Path(); }
        platform::IoStatus OpenFolder(const std::string& name,
                                      std::unique_ptr<platform::Folder>& folder) override {
            platform::IoStatus status = Enter(Operation::OpenFolder, name);
            if (status) {
                status = m_inner->OpenFolder(name, folder);
            }
            if (status) {
                folder = std::make_unique<Below>(m_owner, std::move(folder));
            }
            return status;
        }
        platform::IoStatus MakeFolder(const std::string& name) override {
            platform::IoStatus status = Enter(Operation::MakeFolder, name);
            return status ? m_inner->MakeFolder(name) : status;
        }
        platform::IoStatus RemoveFolder(const std::string& name) override {
            platform::IoStatus status = Enter(Operation::RemoveFolder, name);
            return status ? m_inner->RemoveFolder(name) : status;
        }
        platform::IoStatus Stat(const std::string& name, platform::FileInfo& info) override {
            platform::IoStatus status = Enter(Operation::Stat, name);
            return status ? m_inner->Stat(name, info) : status;
        }
        platform::IoStatus List(std::vector<platform::FolderEntry>& entries) override {
            std::size_t kept = 0;
            platform::IoStatus status = m_owner.Enter(Operation::List, Path(), &kept);
            return m_owner.Listed(status, kept, entries, [&] { return m_inner->List(entries); });
        }
        platform::IoStatus Open(const std::string& name,
                                std::unique_ptr<platform::FileReader>& reader) override {
            platform::IoStatus status = Enter(Operation::Open, name);
            if (status) {
                status = m_inner->Open(name, reader);
            }
            if (status) {
                reader = std::make_unique<Reader>(m_owner, PathOf(name), std::move(reader));
            }
            return status;
        }
        platform::IoStatus Read(const std::string& name, std::uint64_t limit,
                                std::string& content) override {
            content.clear();
            platform::IoStatus status = Enter(Operation::Read, name);
            return status ? m_inner->Read(name, limit, content) : status;
        }
        platform::IoStatus WriteWhole(const std::string& name, std::string_view content) override {
            platform::IoStatus status = Enter(Operation::WriteWhole, name);
            return status ? m_inner->WriteWhole(name, content) : status;
        }
        platform::IoStatus Create(const std::string& name,
                                  std::unique_ptr<platform::FileWriter>& writer) override {
            platform::IoStatus status = Enter(Operation::Create, name);
            if (status) {
                status = m_inner->Create(name, writer);
            }
            if (status) {
                writer = std::make_unique<Writer>(m_owner, PathOf(name), std::move(writer));
            }
            return status;
        }
        platform::IoStatus RemoveFiles(std::span<const std::string> names,
                                       std::string& failed) override {
            platform::IoStatus first;
            for (const std::string& name : names) {
                platform::IoStatus status = Enter(Operation::RemoveFile, name);
                if (status) {
                    status = m_inner->RemoveFile(name);
                }
                if (first && !status) {
                    first = std::move(status);
                    failed = name;
                }
            }
            return first;
        }
        platform::IoStatus MoveToFree(const std::string& from, const std::string& to) override {
            platform::IoStatus status = Enter(Operation::MoveToFree, from);
            return status ? m_inner->MoveToFree(from, to) : status;
        }
        platform::IoStatus RemoveAbandoned() override {
            platform::IoStatus status = m_owner.Enter(Operation::RemoveAbandoned, Path());
            return status ? m_inner->RemoveAbandoned() : status;
        }
        platform::IoStatus UsableSpace(std::uint64_t& bytes) override {
            platform::IoStatus status = m_owner.Enter(Operation::FreeSpace, Path());
            if (status) {
                status = m_inner->UsableSpace(bytes);
            }
            bytes = m_owner.m_freeBytes.value_or(bytes);
            return status;
        }
        platform::IoStatus Lock(std::chrono::milliseconds patience) override {
            platform::IoStatus status = m_owner.Enter(Operation::Lock, Path());
            return status ? m_inner->Lock(patience) : status;
        }
        platform::IoStatus LockName(const std::string& name,
                                    std::unique_ptr<platform::NameLock>& lock) override {
            platform::IoStatus status = Enter(Operation::Lock, name);
            return status ? m_inner->LockName(name, lock) : status;
        }

    private:
        [[nodiscard]] std::string PathOf(const std::string& name) const {
            return Path() + (Path().ends_with('/') ? "" : "/") + name;
        }
        platform::IoStatus Enter(Operation operation, const std::string& name) {
            return m_owner.Enter(operation, PathOf(name));
        }

        FaultyFileSystem& m_owner;
        std::unique_ptr<platform::Folder> m_inner;
    };

    class Reader final : public platform::FileReader {
    public:
        Reader(FaultyFileSystem& owner, std::string path,
               std::unique_ptr<platform::FileReader> inner)
            : m_owner(owner), m_path(std::move(path)), m_inner(std::move(inner)) {}
        [[nodiscard]] std::uint64_t Size() const override { return m_inner->Size(); }
        platform::IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) override {
            count = 0;
            platform::IoStatus status = m_owner.Enter(Operation::ReadBlock, m_path);
            return status ? m_inner->Read(buffer, capacity, count) : status;
        }

    private:
        FaultyFileSystem& m_owner;
        std::string m_path;
        std::unique_ptr<platform::FileReader> m_inner;
    };

    /// What a listing that may be made to fail delivers.
    template <class List>
    static platform::IoStatus Listed(const platform::IoStatus& status, std::size_t kept,
                                     std::vector<platform::FolderEntry>& entries, List list) {
        if (status) {
            return list();
        }
        entries.clear();
        if (kept != 0 && list() && entries.size() > kept) {
            entries.resize(kept);
        }
        return status;
    }

    static std::size_t Slot(Operation operation) { return static_cast<std::size_t>(operation); }

    static bool Matches(const Fault& fault, Operation operation, const std::string& path) {
        return fault.operation.value_or(operation) == operation &&
               path.find(fault.pathPart) != std::string::npos;
    }

    /// Counts a matching call against the fault and tells whether this one fails.
    static bool Strikes(Fault& fault) {
        if (fault.skip != 0) {
            --fault.skip;
            return false;
        }
        if (fault.times == 0) {
            return false;
        }
        --fault.times;
        return true;
    }

    /// Hook and delay run outside the lock, so that threads wait side by side.
    platform::IoStatus Enter(Operation operation, const std::string& path,
                             std::size_t* keptEntries = nullptr) {
        ++m_calls[Slot(operation)];
        if (const std::int64_t delay = m_delays[Slot(operation)]; delay > 0) {
            std::this_thread::sleep_for(std::chrono::microseconds(delay));
        }
        if (const Hook hook = CurrentHook()) {
            hook(operation, path);
        }
        const std::lock_guard guard(m_lock);
        for (Fault& fault : m_faults) {
            if (Matches(fault, operation, path) && Strikes(fault)) {
                if (keptEntries != nullptr) {
                    *keptEntries = fault.keptEntries;
                }
                return {fault.error, "made to fail"};
            }
        }
        return {};
    }

    Hook CurrentHook() {
        const std::lock_guard guard(m_lock);
        return m_hook;
    }

    platform::FileSystem& m_inner;
    std::mutex m_lock;
    std::vector<Fault> m_faults;
    Hook m_hook;
    std::optional<std::uint64_t> m_freeBytes;
    std::array<std::atomic<std::uint64_t>, kOperations> m_calls = {};
    std::array<std::atomic<std::int64_t>, kOperations> m_delays = {};
};

} // namespace nqp2::test
