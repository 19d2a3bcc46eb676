// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/folder.h"

#include <algorithm>
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
    FreeSpace,
    RemoveFile,
    Create,
    WriteAt,
    Flush,
    ReadAt,
    Commit,
    Other, ///< of a folder
};
inline constexpr std::size_t kOperations = 13;

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
    using IoStatus = platform::IoStatus;
    using Entries = std::vector<platform::FolderEntry>;
    using ReaderPtr = std::unique_ptr<platform::FileReader>;
    using WriterPtr = std::unique_ptr<platform::FileWriter>;
    using FolderPtr = std::unique_ptr<platform::Folder>;

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
    /// Lets the medium tell other facts about what a path leads to.
    void SetFacts(std::function<void(platform::FileInfo&)> facts) {
        const std::lock_guard guard(m_lock);
        m_facts = std::move(facts);
    }
    /// Lets the medium of a folder be another.
    void SetMedium(std::function<void(const std::string& path, platform::MediumFacts&)> medium) {
        const std::lock_guard guard(m_lock);
        m_medium = std::move(medium);
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

    /// Of one kind or of all.
    [[nodiscard]] std::uint64_t Calls(std::optional<Operation> counted = {}) const {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < kOperations; ++i) {
            sum += !counted || Slot(*counted) == i ? m_calls[i].load() : 0;
        }
        return sum;
    }
    void ResetCalls() {
        for (auto& each : m_calls) {
            each = 0;
        }
    }

    IoStatus Stat(const std::string& path, platform::FileInfo& info) override {
        IoStatus status = Pass(Operation::Stat, path, [&] { return m_inner.Stat(path, info); });
        const std::lock_guard guard(m_lock);
        if (m_facts) {
            m_facts(info);
        }
        return status;
    }
    IoStatus List(const std::string& folder, Entries& entries) override {
        return Listed(folder, entries, [&] { return m_inner.List(folder, entries); });
    }
    IoStatus Open(const std::string& path, ReaderPtr& reader) override {
        return Wrap<Reader>(Operation::Open, path, reader,
                            [&] { return m_inner.Open(path, reader); });
    }
    IoStatus Read(const std::string& path, std::uint64_t limit, std::string& content) override {
        content.clear();
        return Pass(Operation::Read, path, [&] { return m_inner.Read(path, limit, content); });
    }
    IoStatus FreeSpace(const std::string& path, std::uint64_t& bytes) override {
        return Space(path, bytes, [&] { return m_inner.FreeSpace(path, bytes); });
    }
    IoStatus OpenFolder(const std::string& path, FolderPtr& folder) override {
        return Wrap<Below>(Operation::Other, path, folder,
                           [&] { return m_inner.OpenFolder(path, folder); });
    }

private:
    /// What was opened by a path.
    template <class Kind>
    class Opened : public Kind {
    public:
        Opened(FaultyFileSystem& owner, std::string path, std::unique_ptr<Kind> inner)
            : m_owner(owner), m_path(std::move(path)), m_inner(std::move(inner)) {}

    protected:
        IoStatus Pass(Operation operation, const auto& call) {
            return m_owner.Pass(operation, m_path, call);
        }

        FaultyFileSystem& m_owner;
        std::string m_path;
        std::unique_ptr<Kind> m_inner;
    };

    class Writer final : public Opened<platform::FileWriter> {
    public:
        using Opened::Opened;
        IoStatus WriteAt(std::uint64_t position, std::string_view bytes) override {
            return Pass(Operation::WriteAt, [&] { return m_inner->WriteAt(position, bytes); });
        }
        IoStatus Resize(std::uint64_t size) override { return m_inner->Resize(size); }
        IoStatus KeepTime(const platform::FileInfo& source) override {
            return m_inner->KeepTime(source);
        }
        IoStatus Close() override { return m_inner->Close(); }
        IoStatus Flush() override {
            return Pass(Operation::Flush, [&] { return m_inner->Flush(); });
        }
        void LetGo() override { m_inner->LetGo(); }
        IoStatus ReadAt(std::uint64_t position, char* buffer, std::size_t capacity,
                        std::size_t& count) override {
            count = 0;
            return Pass(Operation::ReadAt,
                        [&] { return m_inner->ReadAt(position, buffer, capacity, count); });
        }
        IoStatus Commit() override {
            return Pass(Operation::Commit, [&] { return m_inner->Commit(); });
        }
        IoStatus CommitAs(const std::string& name) override {
            return Pass(Operation::Commit, [&] { return m_inner->CommitAs(name); });
        }
        IoStatus CommitUnflushed() override {
            return Pass(Operation::Commit, [&] { return m_inner->CommitUnflushed(); });
        }
    };

    class Reader final : public Opened<platform::FileReader> {
    public:
        using Opened::Opened;
        [[nodiscard]] std::uint64_t Size() const override { return m_inner->Size(); }
        IoStatus Read(char* buffer, std::size_t capacity, std::size_t& count) override {
            count = 0;
            return Pass(Operation::ReadBlock,
                        [&] { return m_inner->Read(buffer, capacity, count); });
        }
        IoStatus Stat(platform::FileInfo& info) override {
            return Pass(Operation::Stat, [&] { return m_inner->Stat(info); });
        }
        void ReadAround() override { m_inner->ReadAround(); }
    };

    class Below final : public Opened<platform::Folder> {
    public:
        using Opened::Opened;
        [[nodiscard]] const std::string& Path() const override { return m_inner->Path(); }
        IoStatus OpenFolder(const std::string& name, FolderPtr& folder) override {
            return m_owner.Wrap<Below>(Operation::Other, PathOf(name), folder,
                                       [&] { return m_inner->OpenFolder(name, folder); });
        }
        IoStatus MakeFolder(const std::string& name) override {
            return Pass(Operation::Other, name, [&] { return m_inner->MakeFolder(name); });
        }
        IoStatus MakeUnflushed(const std::string& name) override {
            return Pass(Operation::Other, name, [&] { return m_inner->MakeUnflushed(name); });
        }
        IoStatus RemoveFolder(const std::string& name) override {
            return Pass(Operation::Other, name, [&] { return m_inner->RemoveFolder(name); });
        }
        IoStatus Stat(const std::string& name, platform::FileInfo& info) override {
            return Pass(Operation::Stat, name, [&] { return m_inner->Stat(name, info); });
        }
        IoStatus List(Entries& entries) override {
            return m_owner.Listed(Path(), entries, [&] { return m_inner->List(entries); });
        }
        IoStatus Open(const std::string& name, ReaderPtr& reader) override {
            return m_owner.Wrap<Reader>(Operation::Open, PathOf(name), reader,
                                        [&] { return m_inner->Open(name, reader); });
        }
        IoStatus Read(const std::string& name, std::uint64_t limit, std::string& content) override {
            content.clear();
            return Pass(Operation::Read, name, [&] { return m_inner->Read(name, limit, content); });
        }
        IoStatus WriteWhole(const std::string& name, std::string_view content) override {
            return Pass(Operation::Other, name, [&] { return m_inner->WriteWhole(name, content); });
        }
        IoStatus Create(const std::string& name, WriterPtr& writer) override {
            return m_owner.Wrap<Writer>(Operation::Create, PathOf(name), writer,
                                        [&] { return m_inner->Create(name, writer); });
        }
        IoStatus RemoveFiles(std::span<const std::string> names, std::string& failed) override {
            IoStatus first;
            for (const std::string& name : names) {
                IoStatus status =
                    Pass(Operation::RemoveFile, name, [&] { return m_inner->RemoveFile(name); });
                if (first && !status) {
                    first = std::move(status);
                    failed = name;
                }
            }
            return first;
        }
        IoStatus MoveToFree(const std::string& from, const std::string& to) override {
            return Pass(Operation::Other, from, [&] { return m_inner->MoveToFree(from, to); });
        }
        IoStatus RemoveAbandoned() override {
            return Opened::Pass(Operation::Other, [&] { return m_inner->RemoveAbandoned(); });
        }
        IoStatus Flush() override {
            return Opened::Pass(Operation::Flush, [&] { return m_inner->Flush(); });
        }
        IoStatus FlushAll() override {
            return Opened::Pass(Operation::Flush, [&] { return m_inner->FlushAll(); });
        }
        IoStatus KeepTime(const std::string& name, const platform::FileInfo& source) override {
            return Pass(Operation::Other, name, [&] { return m_inner->KeepTime(name, source); });
        }
        IoStatus Medium(platform::MediumFacts& facts) override {
            IoStatus status =
                Opened::Pass(Operation::Other, [&] { return m_inner->Medium(facts); });
            m_owner.ChangeMedium(Path(), facts);
            return status;
        }
        IoStatus IsCaseBlind(bool& isBlind) override {
            return Opened::Pass(Operation::Other, [&] { return m_inner->IsCaseBlind(isBlind); });
        }
        IoStatus UsableSpace(std::uint64_t& bytes) override {
            return m_owner.Space(Path(), bytes, [&] { return m_inner->UsableSpace(bytes); });
        }
        IoStatus Lock(std::chrono::milliseconds patience) override {
            return Opened::Pass(Operation::Other, [&] { return m_inner->Lock(patience); });
        }
        IoStatus LockName(const std::string& name,
                          std::unique_ptr<platform::NameLock>& lock) override {
            return Pass(Operation::Other, name, [&] { return m_inner->LockName(name, lock); });
        }

    private:
        [[nodiscard]] std::string PathOf(const std::string& name) const {
            return platform::PathIn(Path(), name);
        }
        IoStatus Pass(Operation operation, const std::string& name, const auto& call) {
            return m_owner.Pass(operation, PathOf(name), call);
        }
    };

    IoStatus Pass(Operation operation, const std::string& path, const auto& call) {
        std::size_t keptEntries = 0;
        IoStatus status = Enter(operation, path, keptEntries);
        return status ? call() : status;
    }
    /// What is opened is faulty as well.
    template <class Wrapper>
    IoStatus Wrap(Operation operation, const std::string& path, auto& opened, const auto& call) {
        IoStatus status = Pass(operation, path, call);
        if (status) {
            opened = std::make_unique<Wrapper>(*this, path, std::move(opened));
        }
        return status;
    }
    IoStatus Space(const std::string& path, std::uint64_t& bytes, const auto& call) {
        IoStatus status = Pass(Operation::FreeSpace, path, call);
        bytes = m_freeBytes.value_or(bytes);
        return status;
    }
    void ChangeMedium(const std::string& path, platform::MediumFacts& facts) {
        const std::lock_guard guard(m_lock);
        if (m_medium) {
            m_medium(path, facts);
        }
    }
    IoStatus Listed(const std::string& folder, Entries& entries, const auto& list) {
        std::size_t kept = 0;
        IoStatus status = Enter(Operation::List, folder, kept);
        if (status) {
            return list();
        }
        entries.clear();
        if (kept != 0 && list()) {
            entries.resize(std::min(entries.size(), kept));
        }
        return status;
    }

    static std::size_t Slot(Operation operation) { return static_cast<std::size_t>(operation); }

    /// Hook and delay run outside the lock, so that threads wait side by side.
    IoStatus Enter(Operation operation, const std::string& path, std::size_t& keptEntries) {
        ++m_calls[Slot(operation)];
        std::this_thread::sleep_for(std::chrono::microseconds(m_delays[Slot(operation)]));
        std::unique_lock lock(m_lock);
        if (const Hook hook = m_hook) {
            lock.unlock();
            hook(operation, path);
            lock.lock();
        }
        for (Fault& fault : m_faults) {
            if (fault.operation.value_or(operation) != operation ||
                path.find(fault.pathPart) == std::string::npos) {
                continue;
            }
            if (fault.skip != 0) {
                --fault.skip;
            } else if (fault.times != 0) {
                --fault.times;
                keptEntries = fault.keptEntries;
                return {fault.error, "made to fail"};
            }
        }
        return {};
    }

    platform::FileSystem& m_inner;
    std::mutex m_lock;
    std::vector<Fault> m_faults;
    Hook m_hook;
    std::function<void(platform::FileInfo&)> m_facts;
    std::function<void(const std::string&, platform::MediumFacts&)> m_medium;
    std::optional<std::uint64_t> m_freeBytes;
    std::array<std::atomic<std::uint64_t>, kOperations> m_calls = {};
    std::array<std::atomic<std::int64_t>, kOperations> m_delays = {};
};

} // namespace nqp2::test
