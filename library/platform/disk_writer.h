// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/disk.h"
#include "platform/durable_file.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace nqp2::platform {

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

/// Writes a new file of the disk.
class DiskFileWriter final : public FileWriter {
public:
    DiskFileWriter(FolderPtr folder, std::string name)
        : m_folder(std::move(folder)), m_name(std::move(name)), m_hidden(m_folder) {}

    IoStatus Begin();

    IoStatus WriteAt(std::uint64_t position, std::string_view bytes) override;
    IoStatus Resize(std::uint64_t size) override;
    IoStatus KeepTime(const FileInfo& source) override;
    IoStatus Flush() override;
    void LetGo() override;
    IoStatus ReadAt(std::uint64_t position, char* buffer, std::size_t capacity,
                    std::size_t& count) override;
    IoStatus Close() override;
    IoStatus Commit() override;
    IoStatus CommitAs(const std::string& name) override;
    IoStatus CommitUnflushed() override;

    /// Gives back what umask took. Cards without permission bits refuse: nothing is lost.
    void SetMode(mode_t mode);
    /// Puts the file in the place of what has its name.
    IoStatus Replace() { return m_hidden.Replace(m_name); }
    /// Whether the hidden name leads to the file in capital letters as well.
    [[nodiscard]] bool IsFoundInCapitals() const;

private:
    bool BeginNamed(const char* name);
    /// Keeps the medium busy while the next bytes are read, so that the flush has little left.
    void StartWriteOut(std::uint64_t end);
    IoStatus MoveTo(const std::string& name, NamesFlushed flushed);

    FolderPtr m_folder;
    std::string m_name;
    Descriptor m_file;
    HiddenName m_hidden;
    std::uint64_t m_started = 0; ///< bytes whose way to the medium has begun
};

} // namespace nqp2::platform
