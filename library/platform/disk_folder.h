// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/descriptor.h"
#include "platform/folder.h"

#include <memory>

namespace nqp2::platform {

/// An open folder of the disk, shared by its Folder and the writers that were begun in it.
class FolderHandle {
public:
    /// A folder that may not be read is opened as a mere place: it cannot be locked or flushed.
    FolderHandle(Descriptor folder, bool isReadable)
        : m_folder(std::move(folder)), m_isReadable(isReadable) {}

    [[nodiscard]] int Get() const { return m_folder.Get(); }
    /// Brings changed names onto the medium.
    IoStatus Flush() const;

    /// Keeps everybody else out who asks the same.
    IoStatus LockAlone(std::chrono::milliseconds patience);
    /// Keeps sweepers out: for writers whose closed files nothing else tells from abandoned ones.
    IoStatus LockShared();
    /// Whether nobody else has closed files here; until EndSweep nobody will.
    bool BeginSweep();
    void EndSweep() const;

private:
    enum class Held { None, Shared, Alone };

    Descriptor m_folder;
    bool m_isReadable;
    Held m_held = Held::None;
};
using FolderPtr = std::shared_ptr<FolderHandle>;

/// Opens a folder of the disk by its path, links followed.
IoStatus OpenDiskFolder(const std::string& path, std::size_t maxEntries,
                        std::unique_ptr<Folder>& folder);

// Folder's writing operations on the disk. Names are those of entries.
IoStatus WriteWholeIn(const FolderPtr& folder, const std::string& name, std::string_view content);
IoStatus CreateIn(const FolderPtr& folder, const std::string& name,
                  std::unique_ptr<FileWriter>& writer);
IoStatus MoveToFreeIn(const FolderPtr& folder, const std::string& from, const std::string& to);
IoStatus LockNameIn(const FolderPtr& folder, const std::string& name,
                    std::chrono::milliseconds patience, std::unique_ptr<NameLock>& lock);

} // namespace nqp2::platform
