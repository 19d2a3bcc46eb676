// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/transaction.h"

#include "platform/case_blind.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

namespace nqp2::copy {

using platform::EntryKind;
using platform::Folder;
using platform::IoError;
using platform::IoStatus;

namespace {

/// What a file of that size takes on a medium whose file system gives space in clusters.
std::uint64_t SpaceTaken(std::uint64_t size) {
    constexpr std::uint64_t kCluster = 32768;
    return (size / kCluster + 1) * kCluster;
}

std::string PathIn(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

/// Takes the last name off an absolute path.
std::string TakeLastName(std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    std::string name = path.substr(slash + 1);
    path.resize(std::max<std::size_t>(slash, 1));
    return name;
}

} // namespace

Transaction::~Transaction() {
    if (m_isDone) {
        return;
    }
    m_missing.clear();
    m_locks.clear(); // which have a file in the root
    m_places.clear();
    for (auto made = m_made.rbegin(); made != m_made.rend(); ++made) {
        static_cast<void>(made->parent->RemoveFolder(made->name));
    }
}

Outcome Transaction::Open(const std::string& root, bool make) {
    std::string above = root;
    std::vector<std::string> missing;
    std::optional<std::string> found = platform::FindExisting(above);
    while (!found && above.size() > 1) {
        missing.push_back(TakeLastName(above));
        found = platform::FindExisting(above);
    }
    if (!found || (!make && !missing.empty())) {
        return Failure("There is no folder " + root + ".");
    }
    return MakeRoot(*found, missing);
}

/// `missing`: names below `above`, the last one first.
Outcome Transaction::MakeRoot(std::string above, std::vector<std::string>& missing) {
    std::unique_ptr<Folder> opened;
    if (const IoStatus status = platform::Files().OpenFolder(above, opened); !status) {
        return Failure("open the folder", above, status);
    }
    m_root = std::move(opened);
    m_rootPath = std::move(above);
    for (; !missing.empty(); missing.pop_back()) {
        std::shared_ptr<Folder> next;
        if (Outcome outcome = Step(m_root, missing.back(), next); !outcome) {
            return outcome;
        }
        m_root = std::move(next);
        m_rootPath = PathIn(m_rootPath, missing.back());
    }
    return {};
}

Outcome Transaction::Step(const std::shared_ptr<Folder>& above, const std::string& name,
                          std::shared_ptr<Folder>& folder) {
    std::string found;
    IoStatus status = FindIn(*above, name, found);
    if (status.error == IoError::NotFound) {
        found = name;
        status = above->MakeFolder(name);
        if (status) {
            m_made.push_back({above, name});
        } else if (status.error == IoError::Exists) {
            status = {}; // somebody else has made it in between
        }
        if (!status) {
            return Failure("make the folder", PathIn(above->Path(), name), status);
        }
    }
    std::unique_ptr<Folder> opened;
    if (status) {
        status = above->OpenFolder(found, opened);
    }
    if (!status) {
        return Failure("open the folder", PathIn(above->Path(), found), status);
    }
    folder = std::move(opened);
    return {};
}

Outcome Transaction::TryReserve(const std::string& name, bool& taken) {
    std::unique_ptr<platform::NameLock> lock;
    const IoStatus status = m_root->LockName(name, lock);
    taken = status.error == IoError::Busy;
    if (status && lock != nullptr) {
        m_locks.push_back(std::move(lock));
    }
    // Where nobody can write nobody needs to be kept out: all may be there already.
    return status || taken || status.error == IoError::ReadOnly
               ? Outcome()
               : Failure("reserve a name in", m_rootPath, status);
}

Outcome Transaction::Reserve(const std::string& name) {
    bool taken = false;
    Outcome outcome = TryReserve(name, taken);
    return taken ? Failure("Another transfer is working on " + name + " in " + m_rootPath + ".")
                 : outcome;
}

void Transaction::Sweep(const std::string& folder) {
    std::unique_ptr<Folder> opened;
    if (folder.empty()) {
        static_cast<void>(m_root->RemoveAbandoned());
    } else if (OpenBelow(*m_root, folder, opened)) {
        static_cast<void>(opened->RemoveAbandoned());
    }
}

Outcome Transaction::PlaceOf(const std::string& folder, Place*& place) {
    const auto [entry, isNew] = m_places.try_emplace(folder);
    place = &entry->second;
    if (!isNew) {
        return {};
    }
    place->path = PathIn(m_rootPath, folder);
    std::unique_ptr<Folder> opened;
    IoStatus status = OpenBelow(*m_root, folder, opened);
    if (status.error == IoError::NotFound) {
        return {};
    }
    std::vector<platform::FolderEntry> entries;
    if (status) {
        place->path = opened->Path();
        status = opened->List(entries);
    }
    if (!status) {
        m_places.erase(entry);
        return Failure("open the folder", PathIn(m_rootPath, folder), status);
    }
    place->names = platform::FolderIndex::Of(std::move(entries));
    place->folder = std::move(opened);
    return {};
}

Outcome Transaction::MakePlace(Place& place, const std::string& folder) {
    std::shared_ptr<Folder> reached = m_root;
    std::string_view rest = folder;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find('/'), rest.size());
        std::shared_ptr<Folder> next;
        if (Outcome outcome = Step(reached, std::string(rest.substr(0, length)), next); !outcome) {
            return outcome;
        }
        reached = std::move(next);
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    place.folder = std::move(reached);
    place.path = place.folder->Path();
    return {};
}

Outcome Transaction::LookAt(const Item& item, Copier& copier) {
    Place* place = nullptr;
    if (Outcome outcome = PlaceOf(item.folder, place); !outcome) {
        return outcome;
    }
    const platform::FolderEntry* const entry = place->names.Find(item.name);
    if (entry == nullptr) {
        m_missing.push_back({&item, place, nullptr});
        return {};
    }
    const std::string path = PathIn(place->path, entry->name);
    if (entry->kind != EntryKind::File) {
        const bool isLink = entry->kind == EntryKind::Link;
        return Failure(path + " is in the way and is " + (isLink ? "a link." : "no file."));
    }
    std::unique_ptr<platform::FileReader> reader;
    if (const IoStatus status = place->folder->Open(entry->name, reader); !status) {
        return Failure("read", path, status);
    }
    bool same = reader->Size() == item.source.size;
    Outcome outcome = same ? copier.Compare(item.source, path, *reader, same) : Outcome();
    return same || !outcome ? outcome : Failure(path + " is there already with other content.");
}

Outcome Transaction::Look(const std::vector<Item>& items, Copier& copier) {
    for (const Item& item : items) {
        if (Outcome outcome = LookAt(item, copier); !outcome) {
            return outcome;
        }
    }
    return {};
}

Outcome Transaction::CheckSpace() {
    std::uint64_t needed = 0;
    for (const Pending& pending : m_missing) {
        // Files full of holes may be larger than all media: the sum must not begin anew at 0.
        needed += std::min(SpaceTaken(pending.item->source.size),
                           std::numeric_limits<std::uint64_t>::max() - needed);
    }
    if (m_missing.empty()) {
        return {};
    }
    std::uint64_t free = 0;
    if (const IoStatus status = m_root->UsableSpace(free); !status) {
        return Failure("ask for the free space of", m_rootPath, status);
    }
    return needed <= free ? Outcome()
                          : Failure("There is too little space in " + m_rootPath + ": " +
                                    std::to_string(needed) + " bytes are needed, " +
                                    std::to_string(free) + " are free.");
}

Outcome Transaction::Begin(Pending& pending) {
    const Item& item = *pending.item;
    Place& place = *pending.place;
    IoStatus status{IoError::NotFound, {}};
    // Once more where another transaction has taken back the folder that it had made.
    for (int tries = 0; tries < 2 && status.error == IoError::NotFound; ++tries) {
        Outcome outcome =
            place.folder != nullptr && tries == 0 ? Outcome() : MakePlace(place, item.folder);
        if (!outcome) {
            return outcome;
        }
        status = place.folder->Create(item.name, pending.writer);
    }
    return status ? Outcome() : Failure("write", PathIn(place.path, item.name), status);
}

Outcome Transaction::Write(Copier& copier, std::uint64_t& written) {
    for (Pending& pending : m_missing) {
        const Item& item = *pending.item;
        Outcome outcome = Begin(pending);
        if (outcome) {
            outcome =
                copier.Copy(item.source, PathIn(pending.place->path, item.name), *pending.writer);
        }
        if (!outcome) {
            return outcome;
        }
        written += item.source.size;
    }
    return {};
}

/// Backwards, so that what shows the others goes before them.
void Transaction::TakeBack(std::size_t named) {
    while (named-- > 0) {
        const Pending& pending = m_missing[named];
        static_cast<void>(pending.place->folder->RemoveFile(pending.item->name));
    }
}

Outcome Transaction::Commit() {
    for (std::size_t i = 0; i < m_missing.size(); ++i) {
        if (const IoStatus status = m_missing[i].writer->Commit(); !status) {
            TakeBack(i);
            return Failure("name the file",
                           PathIn(m_missing[i].place->path, m_missing[i].item->name), status);
        }
    }
    m_isDone = true;
    return {};
}

} // namespace nqp2::copy
