// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/ignore.h"
#include "offload/mhl/tree.h"
#include "platform/folder.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
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

/// What a walk met beside the files and folders that it took.
struct WalkFindings {
    OddEntries leftOut; ///< links, devices, names that no list can hold, other file systems
    OddEntries unread;  ///< what could not be looked at, the rest of a folder included
    OddEntries ignored; ///< what a pattern leaves out
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

/// Is told of each folder that is entered; false ends the walk with a Failure, "Cancelled.".
using OnFolder = std::function<bool(const std::string& path, const platform::FileInfo& info)>;

/// What a walk leaves out.
struct WalkRules {
    WalkRules(const mhl::IgnoreList& patterns, // NOLINT(google-explicit-constructor)
              const mhl::IgnoreList* strangers = nullptr)
        : ignored(patterns), foreign(strangers) {}

    const mhl::IgnoreList& ignored;           ///< it is told as ignored,
    const mhl::IgnoreList* foreign = nullptr; ///< and by these patterns of a stranger as left out
    bool areListsLookedInto = false; ///< what lies beside lists in their folders is left out
};

/// Walks a folder and all below it without following a link. What it cannot look at below is told
/// in the index; a Failure is thrown for the root alone.
void WalkFolder(platform::Folder& root, const WalkRules& rules, const OnFolder& onFolder,
                FolderIndex& index);

/// How a folder differs by now from what it was: what is new, gone or in another state, and what
/// a second walk could not look at.
OddEntries ChangesSince(const FolderIndex& before, platform::Folder& root, const WalkRules& rules,
                        const OnFolder& onFolder);

/// The files and folders of another folder that have no place in the tree of this one.
OddEntries StrangeEntries(const mhl::Tree& tree, platform::Folder& root, const WalkRules& rules,
                          const OnFolder& onFolder);

} // namespace nqp2::offload
