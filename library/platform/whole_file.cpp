// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/WholeFile.h"

#include "platform/file_system.h"
#include "platform/folder.h"
#include "platform/guard.h"

#include <memory>

namespace nqp2 {
namespace {

/// Removes what killed writers have left beside a file.
void Sweep(const std::string& path) {
    const std::string above = platform::FolderPart(path);
    std::unique_ptr<platform::Folder> folder;
    if (platform::Files().OpenFolder(above.empty() ? "." : above, folder)) {
        static_cast<void>(folder->RemoveAbandoned()); // what stays is in the way of nothing
    }
}

} // namespace

std::string WriteWholeFile(const std::string& path, std::string_view content) noexcept {
    return platform::Guarded(std::string("out of memory"), [&] {
        Sweep(path); // first: it may take the room
        const platform::IoStatus status = platform::Files().WriteWhole(path, content);
        return status                  ? std::string()
               : status.reason.empty() ? std::string("not written")
                                       : status.reason;
    });
}

} // namespace nqp2
