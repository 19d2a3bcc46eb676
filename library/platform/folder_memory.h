// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"
#include "platform/folder_index.h"

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <string>

namespace nqp2::platform {

/// A folder's names, and whether an earlier operation has listed them.
struct KnownNames {
    std::shared_ptr<const FolderIndex> index; ///< null: not asked for yet
    bool areKept = false;
};

/// The time of day, which stamps are made of, beside a clock that is never set.
struct Moment {
    std::chrono::system_clock::time_point wall;
    std::chrono::steady_clock::time_point steady;
    static Moment Now();
};

/// Whether each change to a folder's entries since it was listed shows in its stamp, the time
/// `modified`: not where both may have happened in one step of the medium's clock, which is two
/// seconds on a card, nor where the system's clock has been set back in between.
bool StampTells(std::time_t modified, const Moment& listed, const Moment& now);

/// The names of folders, kept from one operation to the next. In each operation a folder is listed
/// once at most, whatever came of it: when its stamp says that it changed or is another one, while
/// StampTells is false, and after a failure. Kept names are a hint all the same: who uses them asks
/// the file system for a file's own name before it counts as missing, and for the name that was
/// found before it counts as there. One thread at a time.
class FolderMemory {
public:
    /// Folders that take more, all together, are kept for one operation alone, the largest first: a
    /// card of 100,000 clips takes about 50 MiB.
    static constexpr std::size_t kMaxBytes = std::size_t{64} << 20U;

    FolderMemory() = default;
    FolderMemory(const FolderMemory&) = delete;
    FolderMemory& operator=(const FolderMemory&) = delete;

    /// From here on names that are kept have to prove themselves.
    void BeginOperation();
    /// Throws std::bad_alloc when there is no memory to list it.
    KnownNames NamesOf(const std::string& folder);
    /// The same, listed now whatever is kept.
    KnownNames ListAgain(const std::string& folder);
    void Clear();

private:
    struct Kept {
        std::shared_ptr<const FolderIndex> index;
        FileInfo folder;
        Moment listed;
        std::size_t bytes;
        std::uint64_t operation; ///< that listed it
    };

    using AllKept = std::map<std::string, Kept>; ///< by the folder's path

    /// What comes behind it.
    AllKept::iterator Forget(AllKept::iterator kept);

    AllKept m_kept;
    std::size_t m_bytes = 0; ///< of all that is kept
    std::uint64_t m_operation = 0;
};

/// The names of a folder, listed now.
KnownNames ListNames(const std::string& folder);

} // namespace nqp2::platform
