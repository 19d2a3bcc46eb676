// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/file_tally.h"

#include "platform/folder.h"
#include "platform/unicode.h"

#include <utility>

namespace nqp2::platform {
namespace {

/// Folders within each other; those of cards are four.
constexpr std::size_t kMostDepth = 64;

} // namespace

TalliedFolder::TalliedFolder(Place place)
    : m_place(std::move(place)), m_names(&m_place.Names()), m_taken(Entries().size(), false) {}

std::size_t TalliedFolder::Find(const std::string& name) const {
    const FolderEntry* const entry = m_names->Find(name);
    return entry != nullptr ? static_cast<std::size_t>(entry - Entries().data()) : kNone;
}

CString TalliedFolder::PathOf(std::size_t entry) const {
    return m_place.PathOf(TextFromNameBytes(Entries()[entry].name));
}

std::string TalliedFolder::OnDisk(std::size_t entry) const {
    return PathIn(m_place.OnDisk(), Entries()[entry].name);
}

Folder* TalliedFolder::Opened() {
    if (!m_isTried) {
        m_isTried = true;
        static_cast<void>(m_place.Open(m_opened)); // its files are found by their paths as well
    }
    return m_opened.get();
}

bool TalliedFolder::Take(std::size_t entry, FileInfo& info) {
    Folder* const folder = Opened();
    const std::string& name = Entries()[entry].name;
    const bool isFound =
        folder != nullptr && folder->Stat(name, info) && info.kind != EntryKind::Link;
    const bool isFile = Entries()[entry].kind == EntryKind::File &&
                        (isFound || Files().Stat(OnDisk(entry), info)) &&
                        info.kind == EntryKind::File;
    m_taken[entry] = m_taken[entry] || isFile;
    return isFile;
}

IoStatus TalliedFolder::Read(std::size_t entry, std::uint64_t limit, std::string& content) {
    Folder* const folder = Opened();
    IoStatus status = folder != nullptr ? folder->Read(Entries()[entry].name, limit, content)
                                        : IoStatus{IoError::IsLink, {}};
    return status.error == IoError::IsLink ? Files().Read(OnDisk(entry), limit, content) : status;
}

/// A folder on the way.
struct FileTally::Step {
    std::string onDisk;
    CString written;
    std::size_t depth = 0;
    std::shared_ptr<platform::Folder> above; ///< null for the root itself
    std::string name;
};

TalliedFolder& FileTally::Folder(const Place& place) {
    return m_folders.try_emplace(place.OnDisk(), place).first->second;
}

bool FileTally::RestBelow(const Place& top, std::vector<RestFile>& files) {
    m_left = kMaxFolderEntries;
    std::vector<Step> steps = {{top.OnDisk(), top.Written(), 0, nullptr, {}}};
    bool isWhole = true;
    while (!steps.empty()) {
        const Step step = std::move(steps.back());
        steps.pop_back();
        isWhole = AddRest(step, steps, files) && isWhole;
    }
    return isWhole;
}

/// What has gone meanwhile has nothing to tell.
bool FileTally::AddRest(const Step& step, std::vector<Step>& steps, std::vector<RestFile>& files) {
    std::unique_ptr<platform::Folder> opened;
    const IoStatus status = step.above == nullptr ? Files().OpenFolder(step.onDisk, opened)
                                                  : step.above->OpenFolder(step.name, opened);
    if (!status) {
        const bool isLink = status.error == IoError::IsLink;
        if (isLink && step.above != nullptr) {
            files.push_back({step.written, 0, EntryKind::Link});
        }
        return isLink || status.error == IoError::NotFound;
    }
    const std::shared_ptr<platform::Folder> folder = std::move(opened);
    const auto tallied = m_folders.find(step.onDisk);
    std::vector<FolderEntry> listed;
    bool isWhole = true;
    if (tallied == m_folders.end()) {
        isWhole = static_cast<bool>(folder->List(listed));
    }
    const std::vector<FolderEntry>& entries =
        tallied == m_folders.end() ? listed : tallied->second.Entries();
    const Place place(step.written);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (m_left == 0) {
            return false;
        }
        --m_left;
        const FolderEntry& entry = entries[i];
        const bool isTaken = tallied != m_folders.end() && tallied->second.IsTaken(i);
        if (isTaken || entry.name.find('\\') != std::string::npos) {
            continue;
        }
        CString path = place.PathOf(TextFromNameBytes(entry.name));
        if (entry.kind == EntryKind::Folder) {
            if (step.depth == kMostDepth) {
                isWhole = false;
                continue;
            }
            steps.push_back({PathIn(step.onDisk, entry.name), std::move(path), step.depth + 1,
                             folder, entry.name});
            continue;
        }
        FileInfo info;
        if (folder->Stat(entry.name, info) && info.kind != EntryKind::Folder) {
            files.push_back(
                {std::move(path), info.kind == EntryKind::File ? info.size : 0, info.kind});
        }
    }
    return isWhole;
}

} // namespace nqp2::platform
