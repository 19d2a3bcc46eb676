// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "platform/sorted_names.h"

#include "platform/file_system.h"

#include <algorithm>
#include <numeric>

namespace nqp2::platform {
namespace {

static_assert(kMaxFolderEntries <= UINT32_MAX / 1024,
              "names, each shorter than 1,024 bytes, are counted in 32 bits together");

/// Room for a large folder at once: where a list grows, it is there twice for a moment.
std::size_t LikelyCount(const std::string& folder) {
    constexpr std::uint64_t kBytesOfEntry = 20; // or a little more, where a size is told
    constexpr std::uint64_t kMost = 100'000;
    FileInfo info;
    return Files().Stat(folder, info) ? std::min(info.size / kBytesOfEntry, kMost) : 0;
}

/// A name before its order is known: its first bytes as one number, in their order, which spares
/// most comparisons a look at the name.
struct Head {
    std::uint64_t bytes;
    std::uint32_t start;
    std::uint32_t length;
};

std::uint64_t FirstBytes(std::string_view name) {
    std::uint64_t bytes = 0;
    for (std::size_t i = 0; i < sizeof(bytes); ++i) {
        const char byte = i < name.size() ? name[i] : '\0';
        bytes = bytes << 8U | static_cast<unsigned char>(byte);
    }
    return bytes;
}

/// The names as they come.
struct Listing {
    std::string text;
    std::vector<Head> heads;

    /// The list of entries takes far more room: it is gone before more is made of the names.
    explicit Listing(const std::string& folder) {
        std::vector<FolderEntry> entries;
        entries.reserve(LikelyCount(folder));
        static_cast<void>(Files().List(folder, entries));
        text.reserve(std::accumulate(
            entries.begin(), entries.end(), std::size_t{0},
            [](std::size_t sum, const auto& entry) { return sum + entry.name.size(); }));
        heads.reserve(entries.size());
        for (const FolderEntry& entry : entries) {
            heads.push_back({FirstBytes(entry.name), static_cast<std::uint32_t>(text.size()),
                             static_cast<std::uint32_t>(entry.name.size())});
            text += entry.name;
        }
    }
    [[nodiscard]] std::string_view NameOf(const Head& head) const {
        return {text.data() + head.start, head.length};
    }
    void Sort() {
        std::sort(heads.begin(), heads.end(), [this](const Head& left, const Head& right) {
            return left.bytes == right.bytes ? NameOf(left) < NameOf(right)
                                             : left.bytes < right.bytes;
        });
    }
};

} // namespace

SortedNames::SortedNames(const std::string& folder) {
    Listing listing(folder);
    listing.Sort();
    m_text.reserve(listing.text.size());
    m_starts.reserve(listing.heads.size() + 1);
    for (const Head& head : listing.heads) {
        m_text += listing.NameOf(head);
        m_starts.push_back(static_cast<std::uint32_t>(m_text.size()));
    }
}

bool SortedNames::Has(std::string_view name, std::size_t& near) const {
    constexpr int kSteps = 8; // more than a clip has files in a folder, mostly
    for (int step = 0; step < kSteps && near < Count(); ++step, ++near) {
        const int order = NameAt(near).compare(name);
        if (order >= 0) {
            if (order == 0) {
                return true;
            }
            break;
        }
    }
    near = FirstFrom(name);
    return near < Count() && NameAt(near) == name;
}

std::size_t SortedNames::FirstFrom(std::string_view name) const {
    std::size_t first = 0;
    std::size_t end = Count();
    while (first < end) {
        const std::size_t middle = first + (end - first) / 2;
        if (NameAt(middle) < name) {
            first = middle + 1;
        } else {
            end = middle;
        }
    }
    return first;
}

} // namespace nqp2::platform
