// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/transfer.h"

#include "platform/case_blind.h"
#include "platform/file_system.h"
#include "worker/card_folder.h"
#include "worker/clip_files.h"
#include "worker/verified_copy.h"

#include <algorithm>
#include <memory>

namespace nqp2::worker {
namespace {

using platform::Files;

/// What a file of that size takes on a card, whose file system gives space in clusters.
std::uint64_t SpaceTaken(std::uint64_t size) {
    constexpr std::uint64_t kCluster = 32768;
    return (size / kCluster + 1) * kCluster;
}

std::string FolderAbove(const std::string& folder) {
    return folder.substr(0, std::max<std::size_t>(folder.find_last_of('/'), 1));
}

/// Makes a folder with all that is missing above it, and gives its spelling on disk.
Outcome MakeFolders(std::string& folder) {
    if (const auto found = platform::FindExisting(folder)) {
        folder = *found;
        return {};
    }
    std::string parent = FolderAbove(folder);
    if (parent == folder) {
        return Failure("There is no folder " + folder + ".");
    }
    const std::string name = folder.substr(folder.find_last_of('/') + 1);
    if (Outcome outcome = MakeFolders(parent); !outcome) {
        return outcome;
    }
    folder = parent + "/" + name;
    const platform::IoStatus status = Files().MakeFolder(folder);
    const bool stands = status || status.error == platform::IoError::Exists;
    return stands ? Outcome() : Failure("make the folder", folder, status);
}

class Transfer {
public:
    Transfer(std::string contents, std::size_t blockSize, std::uint64_t total, TransferWatch& watch)
        : m_contents(std::move(contents)), m_copier(blockSize, total, watch) {}

    /// Tells the items that have no file yet apart from those that stand already.
    Outcome LookAtTargets(const std::vector<TransferItem>& items);
    /// Fails when what is missing does not fit.
    Outcome CheckSpace() const;
    /// Writes what is missing under hidden names.
    Outcome WriteMissing(TransferSizes& sizes);
    Outcome Commit();

private:
    struct Pending {
        const TransferItem* item = nullptr;
        std::string path;
        std::unique_ptr<platform::FileWriter> writer;
    };

    Outcome LookAt(const TransferItem& item);
    Outcome CheckSame(const TransferItem& item, const std::string& path, std::uint64_t size);
    Outcome WriteOne(Pending& pending);

    std::string m_contents;
    VerifiedCopier m_copier;
    std::vector<Pending> m_missing;
};

Outcome Transfer::CheckSame(const TransferItem& item, const std::string& path, std::uint64_t size) {
    bool same = false;
    if (size == item.size) {
        Outcome outcome = item.content ? m_copier.Compare(path, *item.content, same)
                                       : m_copier.Compare(item.source, path, size, same);
        if (!outcome) {
            return outcome;
        }
    }
    return same ? Outcome() : Failure(path + " is there already with other content.");
}

Outcome Transfer::LookAt(const TransferItem& item) {
    const std::string path = FolderBelow(m_contents, item.folder) + "/" + item.name;
    const auto found = platform::FindExisting(path);
    if (platform::IsLink(found.value_or(path))) {
        return Failure(found.value_or(path) + " stands in the way and is a link.");
    }
    if (!found) {
        m_missing.push_back({&item, path, nullptr});
        return {};
    }
    platform::FileInfo info;
    if (const platform::IoStatus status = Files().Stat(*found, info); !status) {
        return Failure("look at", *found, status);
    }
    return info.kind == platform::EntryKind::File
               ? CheckSame(item, *found, info.size)
               : Failure(*found + " stands in the way and is no file.");
}

Outcome Transfer::LookAtTargets(const std::vector<TransferItem>& items) {
    for (const TransferItem& item : items) {
        if (Outcome outcome = LookAt(item); !outcome) {
            return outcome;
        }
    }
    return {};
}

Outcome Transfer::CheckSpace() const {
    std::uint64_t needed = 0;
    for (const Pending& pending : m_missing) {
        needed += SpaceTaken(pending.item->size);
    }
    std::string folder = m_contents;
    while (!platform::PathExists(folder) && folder.size() > 1) {
        folder = FolderAbove(folder);
    }
    std::uint64_t free = 0;
    if (const auto status = Files().FreeSpace(FolderBelow(folder, ""), free); !status) {
        return Failure("ask for the free space of", folder, status);
    }
    return needed <= free || m_missing.empty()
               ? Outcome()
               : Failure("There is too little space in " + folder + ": " + std::to_string(needed) +
                         " bytes are needed, " + std::to_string(free) + " are free.");
}

Outcome Transfer::WriteOne(Pending& pending) {
    const TransferItem& item = *pending.item;
    std::string folder = m_contents + "/" + item.folder;
    if (Outcome outcome = MakeFolders(folder); !outcome) {
        return outcome;
    }
    pending.path = folder + "/" + item.name;
    if (const auto status = Files().Create(pending.path, pending.writer); !status) {
        return Failure("write", pending.path, status);
    }
    return item.content ? m_copier.Write(*item.content, pending.path, *pending.writer)
                        : m_copier.Copy(item.source, item.size, *pending.writer);
}

Outcome Transfer::WriteMissing(TransferSizes& sizes) {
    for (Pending& pending : m_missing) {
        if (Outcome outcome = WriteOne(pending); !outcome) {
            return outcome;
        }
        sizes.written += pending.item->size;
    }
    return {};
}

Outcome Transfer::Commit() {
    for (std::size_t i = 0; i < m_missing.size(); ++i) {
        const platform::IoStatus status = m_missing[i].writer->Commit();
        if (status) {
            continue;
        }
        // Backwards, so that metadata which already show go before what they describe.
        for (std::size_t named = i; named-- > 0;) {
            static_cast<void>(Files().RemoveFile(m_missing[named].path));
        }
        return Failure("name the file", m_missing[i].path, status);
    }
    return {};
}

void CountSizes(const std::vector<TransferItem>& items, TransferSizes& sizes) {
    sizes = {};
    for (const TransferItem& item : items) {
        sizes.total += item.size;
        sizes.byPart[static_cast<std::size_t>(item.part)] += item.size;
        ++sizes.files;
    }
}

/// Removes what killed processes have left. Failing to is no reason not to go on.
void Sweep(const std::string& contents) {
    for (const std::string& folder : ClipFolders()) {
        static_cast<void>(Files().RemoveAbandoned(FolderBelow(contents, folder)));
    }
}

} // namespace

TransferItem ItemFor(const ClipFile& file, const std::string& clipName) {
    return {file.part, file.path, {}, file.size, file.folder, clipName + file.suffix};
}

Outcome RunTransfer(const std::string& root, const std::vector<TransferItem>& items,
                    std::size_t blockSize, TransferWatch& watch, TransferSizes& sizes) {
    CountSizes(items, sizes);
    const std::string contents = FolderBelow(root, "CONTENTS");
    if (!watch.GoesOn(0, sizes.total)) {
        return Failure("Cancelled.");
    }
    Outcome outcome = CheckFoldersAreNoLinks(contents);
    if (!outcome) {
        return outcome;
    }
    Sweep(contents);
    Transfer transfer(contents, blockSize, sizes.total, watch);
    outcome = transfer.LookAtTargets(items);
    if (outcome) {
        outcome = transfer.CheckSpace();
    }
    if (outcome) {
        outcome = transfer.WriteMissing(sizes);
    }
    if (outcome) {
        outcome = watch.MayFinish(sizes.total) ? transfer.Commit() : Failure("Cancelled.");
    }
    return outcome;
}

} // namespace nqp2::worker
