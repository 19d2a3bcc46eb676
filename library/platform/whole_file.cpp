// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/WholeFile.h"

#include "platform/file_system.h"
#include "platform/folder.h"
#include "platform/guard.h"

#include <cstdint>

namespace nqp2 {
namespace {

constexpr const char* kNoMemory = "out of memory";

std::string ReasonOf(const platform::IoStatus& status) {
    return status                  ? std::string()
           : status.reason.empty() ? std::string("not written")
                                   : status.reason;
}

/// Opens a file's folder, and removes what killed writers have left in it.
platform::IoStatus OpenSwept(const std::string& path, std::unique_ptr<platform::Folder>& folder) {
    const std::string above = platform::FolderPart(path);
    platform::IoStatus status = platform::OpenRoot(above.empty() ? "." : above, folder);
    if (status) {
        static_cast<void>(folder->RemoveAbandoned()); // what stays is in the way of nothing
    }
    return status;
}

} // namespace

std::string WriteWholeFile(const std::string& path, std::string_view content) noexcept {
    return platform::Guarded(std::string(kNoMemory), [&] {
        std::unique_ptr<platform::Folder> folder;
        static_cast<void>(OpenSwept(path, folder)); // first: it may take the room
        return ReasonOf(platform::Files().WriteWhole(path, content));
    });
}

struct WholeFileWriter::State {
    platform::IoStatus status;
    std::unique_ptr<platform::Folder> folder;
    std::string name;
    std::unique_ptr<platform::FileWriter> writer;
    std::uint64_t size = 0;

    platform::IoStatus Begin(const std::string& path) {
        platform::IoStatus begun = OpenSwept(path, folder);
        if (begun) {
            begun = platform::FindTargetIn(*folder, platform::NamePart(path), name);
        }
        if (begun) {
            begun = CheckOld();
        }
        return begun ? folder->Create(name, writer) : begun;
    }

    platform::IoStatus Finish() const {
        platform::IoStatus named = writer->Flush();
        if (named) {
            named = writer->Commit();
        }
        if (named.error == platform::IoError::Exists) {
            named = CheckOld();
            named = named ? folder->RemoveFile(name) : named;
            named = named ? writer->Commit() : named;
        }
        return named;
    }

private:
    /// Fails for what must not be replaced.
    [[nodiscard]] platform::IoStatus CheckOld() const {
        platform::FileInfo info;
        const platform::IoStatus found = folder->Stat(name, info);
        if (found.error == platform::IoError::NotFound) {
            return {};
        }
        return found && info.kind != platform::EntryKind::File
                   ? platform::IoStatus{platform::IoError::Exists, "it is no regular file"}
                   : found;
    }
};

WholeFileWriter::WholeFileWriter(const std::string& path) noexcept {
    platform::Guarded(false, [&] {
        m_state = std::make_unique<State>();
        m_state->status = m_state->Begin(path);
        return true;
    });
}

WholeFileWriter::~WholeFileWriter() = default;

bool WholeFileWriter::Write(std::string_view content) noexcept {
    return platform::Guarded(false, [&] {
        if (!m_state || !m_state->status) {
            return false;
        }
        m_state->status = {platform::IoError::Other, kNoMemory}; // should there be none on the way
        m_state->status = m_state->writer->WriteAt(m_state->size, content);
        m_state->size += content.size();
        return static_cast<bool>(m_state->status);
    });
}

std::string WholeFileWriter::Finish() noexcept {
    return platform::Guarded(std::string(kNoMemory), [&] {
        if (!m_state) {
            return std::string(kNoMemory);
        }
        if (m_state->status) {
            m_state->status = m_state->Finish();
        }
        return ReasonOf(m_state->status);
    });
}

void RemoveAbandonedFiles(const std::string& folder) noexcept {
    platform::Guarded([&] {
        std::unique_ptr<platform::Folder> opened;
        static_cast<void>(OpenSwept(platform::PathIn(folder, ""), opened));
    });
}

} // namespace nqp2
