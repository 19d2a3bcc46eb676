// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/tree.h"
#include "platform/file_system.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace nqp2::offload {

/// An entry of a folder that a walk could not take as it is.
struct OddEntry {
    std::string path; ///< below the root
    std::string why;  ///< the end of a sentence: "is a link"
};

/// The first of many such entries, and how many there are.
class OddEntries {
public:
    static constexpr std::size_t kMostKept = 1000;

    void Add(std::string path, std::string why);
    [[nodiscard]] const std::vector<OddEntry>& Kept() const { return m_kept; }
    [[nodiscard]] std::uint64_t Count() const { return m_count; }

private:
    std::vector<OddEntry> m_kept;
    std::uint64_t m_count = 0;
};

/// The same of what could not be looked at, all of it known again.
class UnseenEntries : public OddEntries {
public:
    void Add(std::string path, std::string why);
    /// Whether a path, or a folder above it, is one of them. One in 10^19 others is taken for one.
    [[nodiscard]] bool Hold(std::string_view path) const;

private:
    std::unordered_set<std::size_t> m_hashes; ///< of the paths
};

/// What a walk met beside the files and folders that it took.
struct WalkFindings {
    OddEntries leftOut;   ///< links, devices, names that no list can hold, other file systems
    UnseenEntries unread; ///< what could not be looked at, the rest of a folder included
    OddEntries ignored;   ///< what a pattern leaves out
    std::vector<std::string> histories; ///< folders of hash lists: "ascmhl", "A/ascmhl"
};

/// Everything below a folder as it was when it was walked.
class FolderIndex : public WalkFindings {
public:
    /// Sorted, with sizes and times.
    mhl::Tree tree;
    std::uint64_t bytes = 0; ///< of all files
    mhl::NodeId largest = mhl::kNoNode;

    /// What the walk was told about a file or folder.
    [[nodiscard]] platform::FileInfo InfoOf(mhl::NodeId node) const;
    void Note(mhl::NodeId node, const platform::FileInfo& info);

private:
    /// What of FileInfo a tree does not hold.
    struct Stamp {
        std::uint64_t inode = 0;
        std::int64_t changed = 0;
        std::uint32_t modifiedNanoseconds = 0;
        std::uint32_t changedNanoseconds = 0;
    };
    std::vector<Stamp> m_stamps;
    std::uint64_t m_device = 0;
};

} // namespace nqp2::offload
