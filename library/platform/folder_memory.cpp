// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_memory.h"

#include <algorithm>
#include <iterator>
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

KnownNames NamesIn(std::vector<FolderEntry> entries, IoStatus status) {
    return {
        std::make_shared<const FolderIndex>(FolderIndex::Of(std::move(entries), std::move(status))),
        false};
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
    return NamesIn(std::move(entries), std::move(status));
}

void FolderMemory::BeginOperation() {
    ++m_operation;
    for (auto each = m_kept.begin(); each != m_kept.end();) {
        each = each->second.index->Status() ? std::next(each) : Forget(each);
    }
    const auto takesLess = [](const auto& left, const auto& right) {
        return left.second.bytes < right.second.bytes;
    };
    while (m_bytes > kMaxBytes) {
        Forget(std::max_element(m_kept.begin(), m_kept.end(), takesLess));
    }
}

KnownNames FolderMemory::NamesOf(const std::string& folder) {
    const auto known = m_kept.find(folder);
    if (known != m_kept.end() && known->second.operation == m_operation) {
        return {known->second.index, false};
    }
    // The stamp is taken before the listing, so that a change in the middle of it shows.
    FileInfo info;
    IoStatus status = Files().Stat(folder, info);
    const Moment now = Moment::Now();
    if (known != m_kept.end() && status && IsSame(known->second.folder, info) &&
        StampsTell(info, known->second.listed, now)) {
        return {known->second.index, true};
    }
    if (known != m_kept.end()) {
        Forget(known);
    }
    KnownNames names = status ? ListNames(folder) : NamesIn({}, std::move(status));
    const std::size_t bytes = names.index->Bytes();
    m_kept.emplace(folder, Kept{names.index, info, now, bytes, m_operation});
    m_bytes += bytes;
    return names;
}

KnownNames FolderMemory::ListAgain(const std::string& folder) {
    if (const auto known = m_kept.find(folder); known != m_kept.end()) {
        Forget(known);
    }
    return NamesOf(folder);
}

void FolderMemory::Clear() {
    m_kept.clear();
    m_bytes = 0;
}

FolderMemory::AllKept::iterator FolderMemory::Forget(AllKept::iterator kept) {
    m_bytes -= kept->second.bytes;
    return m_kept.erase(kept);
}

} // namespace nqp2::platform
