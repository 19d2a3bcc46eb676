// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/folder_index.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>

namespace nqp2::platform {
namespace {

static_assert(kMaxFolderEntries <= UINT32_MAX, "an entry's number takes 32 bits");

/// `count` is a power of two.
std::size_t BucketNumber(std::string_view foldedName, std::size_t count) {
    return std::hash<std::string_view>()(foldedName) & (count - 1);
}

} // namespace

FolderIndex FolderIndex::Of(std::vector<FolderEntry> entries, IoStatus status) {
    FolderIndex index;
    index.m_status = std::move(status);
    index.m_entries = std::move(entries);
    index.FillBuckets();
    return index;
}

void FolderIndex::FillBuckets() {
    const std::size_t count = std::bit_ceil(m_entries.size());
    std::vector<std::size_t> bucketOfEntry;
    bucketOfEntry.reserve(m_entries.size());
    m_buckets.assign(count + 1, 0);
    for (const FolderEntry& entry : m_entries) {
        bucketOfEntry.push_back(BucketNumber(FoldNameCase(entry.name), count));
        ++m_buckets[bucketOfEntry.back() + 1];
    }
    std::partial_sum(m_buckets.begin(), m_buckets.end(), m_buckets.begin());
    std::vector<std::uint32_t> free(m_buckets.begin(), m_buckets.end() - 1);
    m_numbers.resize(m_entries.size());
    for (std::uint32_t number = 0; number < m_numbers.size(); ++number) {
        m_numbers[free[bucketOfEntry[number]]++] = number;
    }
}

std::span<const std::uint32_t> FolderIndex::BucketOf(std::string_view foldedName) const {
    if (m_numbers.empty()) {
        return {};
    }
    const std::size_t bucket = BucketNumber(foldedName, m_buckets.size() - 1);
    const std::span all(m_numbers);
    return all.subspan(m_buckets[bucket], m_buckets[bucket + 1] - m_buckets[bucket]);
}

const FolderEntry* FolderIndex::Find(std::string_view name) const {
    if (name.find_first_of("/\\") != std::string_view::npos) {
        return nullptr;
    }
    const std::string folded = FoldNameCase(name);
    const std::span<const std::uint32_t> bucket = BucketOf(folded);
    for (const std::uint32_t number : bucket) {
        if (m_entries[number].name == name) {
            return &m_entries[number];
        }
    }
    const FolderEntry* first = nullptr;
    for (const std::uint32_t number : bucket) {
        const FolderEntry& entry = m_entries[number];
        const bool earlier = first == nullptr || entry.name < first->name;
        if (earlier && FoldNameCase(entry.name) == folded) {
            first = &entry;
        }
    }
    return first;
}

std::vector<std::string> FolderIndex::Spellings(std::string_view name) const {
    const std::string folded = FoldNameCase(name);
    std::vector<std::string> spellings;
    for (const std::uint32_t number : BucketOf(folded)) {
        if (FoldNameCase(m_entries[number].name) == folded) {
            spellings.push_back(m_entries[number].name);
        }
    }
    std::sort(spellings.begin(), spellings.end());
    return spellings;
}

std::size_t FolderIndex::Bytes() const {
    const std::size_t inPlace = std::string().capacity();
    std::size_t bytes = sizeof(*this) + m_entries.capacity() * sizeof(FolderEntry) +
                        (m_buckets.capacity() + m_numbers.capacity()) * sizeof(std::uint32_t);
    for (const FolderEntry& entry : m_entries) {
        bytes += entry.name.capacity() > inPlace ? entry.name.capacity() : 0;
    }
    return bytes;
}

} // namespace nqp2::platform
