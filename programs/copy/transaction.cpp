// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/transaction.h"

#include "copy/failure.h"
#include "copy/new_file.h"
#include "platform/case_blind.h"
#include "platform/guard.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace nqp2::copy {

using platform::EntryKind;
using platform::Folder;
using platform::IoError;
using platform::IoStatus;
using platform::PathIn;

Transaction::~Transaction() {
    if (m_isDone) {
        return;
    }
    while (m_named > 0) { // backwards, so that what shows the others goes before them
        const Pending& pending = m_missing[--m_named];
        platform::Guarded(
            [&] { static_cast<void>(pending.target->folder->RemoveFile(pending.item->name)); });
    }
    m_missing.clear();
    m_locks.clear(); // which have a file in the root
    m_targets.clear();
    for (auto made = m_made.rbegin(); made != m_made.rend(); ++made) {
        platform::Guarded([&] { static_cast<void>(made->parent->RemoveFolder(made->name)); });
    }
}

void Transaction::Open(const std::string& root, bool make) {
    platform::NearestExisting nearest = platform::FindNearest(root);
    if (nearest.path.empty() || (!make && !nearest.missing.empty())) {
        throw Failure("There is no folder " + root + ".");
    }
    MakeRoot(std::move(nearest.path), nearest.missing);
}

/// `missing`: names below `above`, the last one first.
void Transaction::MakeRoot(std::string above, std::vector<std::string>& missing) {
    std::unique_ptr<Folder> opened;
    Require(platform::Files().OpenFolder(above, opened), "open the folder", above);
    m_root = std::move(opened);
    m_rootPath = std::move(above);
    for (; !missing.empty(); missing.pop_back()) {
        m_root = Step(m_root, missing.back());
        m_rootPath = PathIn(m_rootPath, missing.back());
    }
}

std::shared_ptr<Folder> Transaction::Step(const std::shared_ptr<Folder>& above,
                                          const std::string& name) {
    std::string found;
    IoStatus status = FindIn(*above, name, found);
    if (status.error == IoError::NotFound) {
        found = name;
        status = above->MakeFolder(name);
        if (status) {
            m_made.push_back({above, name});
        } else if (status.error == IoError::Exists) {
            status = {}; // another process has made it in between
        }
        Require(status, "make the folder", PathIn(above->Path(), name));
    }
    std::unique_ptr<Folder> opened;
    if (status) {
        status = above->OpenFolder(found, opened);
    }
    Require(status, "open the folder", PathIn(above->Path(), found));
    return opened;
}

bool Transaction::TryReserve(const std::string& name) {
    std::unique_ptr<platform::NameLock> lock;
    const IoStatus status = m_root->LockName(name, lock);
    if (status.error == IoError::Busy) {
        return false;
    }
    // Where no one can write no one needs to be kept out: all may be there already.
    if (status.error != IoError::ReadOnly) {
        Require(status, "reserve a name in", m_rootPath);
    }
    if (lock != nullptr) {
        m_locks.push_back(std::move(lock));
    }
    return true;
}

void Transaction::Reserve(const std::string& name) {
    if (!TryReserve(name)) {
        throw Failure("Another transfer is working on " + name + " in " + m_rootPath + ".");
    }
}

void Transaction::Sweep(const std::string& folder) {
    std::unique_ptr<Folder> opened;
    if (folder.empty()) {
        static_cast<void>(m_root->RemoveAbandoned());
    } else if (OpenBelow(*m_root, folder, opened)) {
        static_cast<void>(opened->RemoveAbandoned());
    }
}

Transaction::Target& Transaction::TargetOf(const std::string& folder) {
    const auto known = m_targets.find(folder);
    return known != m_targets.end() ? known->second
                                    : m_targets.emplace(folder, OpenTarget(folder)).first->second;
}

Transaction::Target Transaction::OpenTarget(const std::string& folder) const {
    Target target;
    target.path = PathIn(m_rootPath, folder);
    std::unique_ptr<Folder> opened;
    IoStatus status = OpenBelow(*m_root, folder, opened);
    if (status.error == IoError::NotFound) {
        return target;
    }
    std::vector<platform::FolderEntry> entries;
    if (status) {
        status = opened->List(entries);
    }
    Require(status, "open the folder", target.path);
    target.path = opened->Path();
    target.names = platform::FolderIndex::Of(std::move(entries));
    target.folder = std::move(opened);
    return target;
}

void Transaction::MakeTarget(Target& target, const std::string& folder) {
    std::shared_ptr<Folder> reached = m_root;
    std::string_view rest = folder;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find('/'), rest.size());
        reached = Step(reached, std::string(rest.substr(0, length)));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    target.folder = std::move(reached);
    target.path = target.folder->Path();
}

void Transaction::LookAt(const Item& item, Copier& copier) {
    Target& target = TargetOf(item.folder);
    const platform::FolderEntry* const entry = target.names.Find(item.name);
    if (entry == nullptr) {
        m_missing.push_back({&item, &target, nullptr});
        return;
    }
    const std::string path = PathIn(target.path, entry->name);
    if (entry->kind != EntryKind::File) {
        throw Failure(InTheWay(path, entry->kind));
    }
    std::unique_ptr<platform::FileReader> reader;
    Require(target.folder->Open(entry->name, reader), "read", path);
    if (reader->Size() != item.source.size || !copier.IsSame(item.source, path, *reader)) {
        throw Failure(path + " is there already with other content.");
    }
}

void Transaction::Look(const std::vector<Item>& items, Copier& copier) {
    for (const Item& item : items) {
        LookAt(item, copier);
    }
}

void Transaction::CheckSpace() {
    std::uint64_t needed = 0;
    for (const Pending& pending : m_missing) {
        // Files full of holes may be larger than all media: the sum must not begin anew at 0.
        needed += std::min(SpaceTaken(pending.item->source.size),
                           std::numeric_limits<std::uint64_t>::max() - needed);
    }
    if (m_missing.empty()) {
        return;
    }
    std::uint64_t free = 0;
    Require(m_root->UsableSpace(free), "ask for the free space of", m_rootPath);
    if (needed > free) {
        throw Failure(TooLittleSpace(m_rootPath, needed, free));
    }
}

void Transaction::Begin(Pending& pending) {
    const Item& item = *pending.item;
    Target& target = *pending.target;
    IoStatus status{IoError::NotFound, {}};
    // Once more where another transaction has taken back the folder that it had made.
    for (int tries = 0; tries < 2 && status.error == IoError::NotFound; ++tries) {
        if (target.folder == nullptr || tries > 0) {
            MakeTarget(target, item.folder);
        }
        status = target.folder->Create(item.name, pending.writer);
    }
    Require(status, "write", PathIn(target.path, item.name));
}

void Transaction::Write(Copier& copier, std::uint64_t& written) {
    for (Pending& pending : m_missing) {
        const Item& item = *pending.item;
        Begin(pending);
        copier.Copy(item.source, PathIn(pending.target->path, item.name), *pending.writer);
        written += item.source.size;
    }
}

void Transaction::Commit() {
    for (const Pending& pending : m_missing) {
        Require(pending.writer->Commit(), "name the file",
                PathIn(pending.target->path, pending.item->name));
        ++m_named;
    }
    m_isDone = true;
}

} // namespace nqp2::copy
