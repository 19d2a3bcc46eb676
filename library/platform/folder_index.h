// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "platform/file_system.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::platform {

/// One folder's names, read once, answering case-blind questions without a system call each. A
/// folder that could not be read answers as if empty.
class FolderIndex {
public:
    FolderIndex() = default;
    /// Of entries that were listed, with what the listing answered.
    static FolderIndex Of(std::vector<FolderEntry> entries, IoStatus status = {});

    [[nodiscard]] const IoStatus& Status() const { return m_status; }
    /// Entries in the file system's order.
    [[nodiscard]] const std::vector<FolderEntry>& Entries() const { return m_entries; }
    /// The entry under the name: the exact name first, else the first in sorted order of those
    /// that differ only in case; null when there is none. Names with a separator are never found.
    /// Safe from several threads at once.
    [[nodiscard]] const FolderEntry* Find(std::string_view name) const;
    /// Every name that differs from `name` in nothing but case, itself too, sorted by their bytes.
    [[nodiscard]] std::vector<std::string> Spellings(std::string_view name) const;
    [[nodiscard]] bool Contains(std::string_view name) const { return Find(name) != nullptr; }
    /// About what it takes in memory.
    [[nodiscard]] std::size_t Bytes() const;

private:
    /// Sorts the entries' numbers into buckets by the hash of their folded names: about ten bytes
    /// beside the name itself, and one bucket to look at for each question.
    void FillBuckets();
    [[nodiscard]] std::span<const std::uint32_t> BucketOf(std::string_view foldedName) const;

    IoStatus m_status;
    std::vector<FolderEntry> m_entries;
    std::vector<std::uint32_t> m_buckets; ///< where each begins in m_numbers, and the end of all
    std::vector<std::uint32_t> m_numbers; ///< of entries, bucket after bucket
};

} // namespace nqp2::platform
