// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CString.h"
#include "platform/folder.h"
#include "platform/folder_index.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::platform {

class FolderMemory;

/// One entry of a Place.
struct FoundFile {
    CString path;          ///< the folder as it was asked for, followed by the name
    CString title;         ///< the name without its extension
    std::string posixPath; ///< the same file for the file system
    bool isFolder = false;
    bool isSpecial = false; ///< a pipe, socket or device, or a link that leads nowhere
    /// False for a name with a backslash: `path` would lead to another file, perhaps far outside
    /// of the folder, and must not be opened.
    bool pathIsSafe = true;

    [[nodiscard]] bool IsReadable() const { return !isFolder && !isSpecial && pathIsSafe; }
};

/// A folder on a card: as the host wrote it ("E:\CONTENTS\CLIP\") and as it is on disk, where names
/// are found in any letter case. Making one asks the disk nothing. What it learns is kept: its real
/// spelling, the entries once they were listed, the places below it. Copies share that, so one
/// place for each operation lists each folder at most once, and sees no later change. One thread at
/// a time.
class Place {
public:
    /// An interface path, with or without a separator at its end. A memory, which must outlive the
    /// place and those below it, spares the listing of folders that it knows.
    explicit Place(CString written, FolderMemory* memory = nullptr);
    /// A folder of the disk; its path as written is what InterfaceRoot gives.
    static Place At(std::string_view folder);

    /// As the host wrote it; nothing is added.
    [[nodiscard]] const CString& Written() const;
    /// The interface path of what has that name below, whether it exists or not, for records.
    [[nodiscard]] CString PathOf(const CString& name) const;
    /// The place below ("VIDEO\", "\AVCHD\BDMV\"), the same one each time.
    [[nodiscard]] Place Below(const CString& name) const;

    /// The folder for the file system, in its real spelling; as written when it is missing. Without
    /// a separator at its end, but for "/". Empty, which is never found, for a drive that is not
    /// mapped.
    [[nodiscard]] const std::string& OnDisk() const;
    /// Success when it is a folder that exists; NotFound when it is missing; else why it cannot be
    /// looked for.
    [[nodiscard]] IoStatus Look() const;
    [[nodiscard]] bool Exists() const { return static_cast<bool>(Look()); }

    /// All entries, listed at the first call. Status() tells whether the folder was read to its
    /// end.
    [[nodiscard]] const FolderIndex& Names() const;
    /// The entries that fit a pattern of "*" and "?" (letter case ignored), in the file system's
    /// order. `status` is that of Names().
    [[nodiscard]] std::vector<FoundFile> List(const CString& pattern, IoStatus& status) const;
    /// Finds one entry: the exact name, else the first in sorted order of those that differ only in
    /// case. One system call for an exact name; entries are listed only for another one, and are
    /// what answers from then on: ask for Names() before many questions. NotFound when there is
    /// none, also for a name with a separator; the folder's status when it could not be read. Names
    /// from a memory cost one system call more for an entry in another letter case.
    IoStatus Find(const CString& name, FoundFile& found) const;
    [[nodiscard]] bool Has(const CString& name) const;
    /// The same for the name's bytes.
    [[nodiscard]] bool Has(const std::string& name) const;

    /// Opens it for everything that writes (platform/folder.h): the root below which no link is
    /// followed.
    IoStatus Open(std::unique_ptr<Folder>& folder) const;
    /// Opens a folder below it ("CONTENTS\CLIP"), found case-blind, no step of it a link.
    IoStatus OpenBelow(const CString& names, std::unique_ptr<Folder>& folder) const;
    /// The same; what is missing on the way is made.
    IoStatus MakeBelow(const CString& names, std::unique_ptr<Folder>& folder) const;

private:
    struct State;
    [[nodiscard]] IoStatus Ask(const std::string& name, FolderEntry& entry) const;
    [[nodiscard]] FoundFile FileOf(const FolderEntry& entry) const;

    std::shared_ptr<State> m_state;
};

/// An interface path taken apart at its last separator; the current folder when it has none.
struct PathParts {
    Place folder;
    CString name;
};
PathParts SplitPath(const CString& path);

/// What a whole interface path leads to, for the file system: in its real spelling; as written when
/// it is missing. Empty, which is never found, for a drive that is not mapped.
std::string PathOnDisk(const CString& path, FolderMemory* memory = nullptr);

/// The same file or folder as an interface path that another process understands, whatever its
/// current folder is. Drive letters stay; so does a path that leads nowhere.
CString FullPath(const CString& path);

} // namespace nqp2::platform
