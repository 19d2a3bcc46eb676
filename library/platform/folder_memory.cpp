// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_memory.h"

#include <utility>

namespace nqp2::platform {
namespace {

using std::chrono::seconds;
using std::chrono::system_clock;

/// FAT counts in steps of two seconds; the rest is for clocks that are not quite the same.
constexpr seconds kStep(3);
/// What may lie between the two clocks' ways: far more than a clock that is being adjusted drifts.
constexpr seconds kDrift(1);

bool IsSame(const FileInfo& left, const FileInfo& right) {
    return left.device == right.device && left.inode == right.inode &&
           left.modified == right.modified &&
           left.modifiedNanoseconds == right.modifiedNanoseconds && left.changed == right.changed &&
           left.changedNanoseconds == right.changedNanoseconds;
}

/// Stamps come from the medium and may be any number: whole seconds are compared, nothing is added
/// to one.
bool IsPast(std::time_t modified, const Moment& now) {
    return modified < system_clock::to_time_t(now.wall - kStep);
}

/// A camera's clock need not go as ours does. What it stamps ahead of us is told from each change
/// that we see made, until our clock comes near.
bool IsFuture(std::time_t modified, const Moment& now) {
    return modified > system_clock::to_time_t(now.wall + kStep);
}

/// Anyone can set `modified` back, as copying a card does, and `changed` then tells of that moment.
/// In one step of the clock both may stay the same over two changes.
bool StampsTell(const FileInfo& folder, const Moment& listed, const Moment& now) {
    return StampTells(folder.modified, listed, now) && StampTells(folder.changed, listed, now);
}

} // namespace

Moment Moment::Now() {
    return {system_clock::now(), std::chrono::steady_clock::now()};
}

bool StampTells(std::time_t modified, const Moment& listed, const Moment& now) {
    const bool wasSetBack = now.wall - listed.wall + kDrift < now.steady - listed.steady;
    const bool isQuiet = (IsPast(modified, listed) && IsPast(modified, now)) ||
                         (IsFuture(modified, listed) && IsFuture(modified, now));
    return isQuiet && !wasSetBack;
}

KnownNames ListNames(const std::string& folder) {
    std::vector<FolderEntry> entries;
    IoStatus status = ListWhole(Files(), folder, entries);
    return {
        std::make_shared<const FolderIndex>(FolderIndex::Of(std::move(entries), std::move(status))),
        false};
}

KnownNames FolderMemory::NamesOf(const std::string& folder) {
    const auto known = m_kept.find(folder);
    if (known != m_kept.end() && known->second.operation == m_operation) {
        return {known->second.index, false};
    }
    FileInfo info;
    if (IoStatus status = Files().Stat(folder, info); !status) {
        Forget(folder);
        return {std::make_shared<const FolderIndex>(FolderIndex::Of({}, std::move(status)))};
    }
    const Moment now = Moment::Now();
    if (known != m_kept.end() && IsSame(known->second.folder, info) &&
        StampsTell(info, known->second.listed, now)) {
        return {known->second.index, true};
    }
    return List(folder, info, now);
}

KnownNames FolderMemory::ListAgain(const std::string& folder) {
    Forget(folder);
    return NamesOf(folder);
}

void FolderMemory::Clear() {
    m_kept.clear();
    m_bytes = 0;
}

// The stamp was taken before the listing, so that a change in the middle of it shows.
KnownNames FolderMemory::List(const std::string& path, const FileInfo& folder, const Moment& now) {
    Forget(path);
    KnownNames names = ListNames(path);
    if (names.index->Status()) {
        Keep(path, {names.index, folder, now, names.index->Bytes(), m_operation});
    }
    return names;
}

void FolderMemory::Keep(const std::string& path, Kept kept) {
    if (m_bytes + kept.bytes > kMaxBytes) {
        Clear();
    }
    if (kept.bytes <= kMaxBytes) {
        const std::size_t bytes = kept.bytes;
        m_kept.emplace(path, std::move(kept));
        m_bytes += bytes;
    }
}

void FolderMemory::Forget(const std::string& path) {
    const auto known = m_kept.find(path);
    if (known != m_kept.end()) {
        m_bytes -= known->second.bytes;
        m_kept.erase(known);
    }
}

} // namespace nqp2::platform
