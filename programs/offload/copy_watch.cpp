// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/copy_watch.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace nqp2::offload {
namespace {

using mhl::NodeId;
using platform::EntryKind;
using platform::FileInfo;
using platform::Folder;

/// File systems without numbers of their own give a file another one whenever they like, and
/// servers another time of change.
bool HasStamps(const platform::MediumFacts& medium) {
    constexpr std::string_view kWithout[] = {"vfat", "msdos", "exfat", "fuse", "fuseblk"};
    return medium.server.empty() &&
           std::none_of(std::begin(kWithout), std::end(kWithout),
                        [&](std::string_view each) { return each == medium.fileSystem; });
}

/// Looks through a copy by the tree of the card, each folder by its handle.
class Look {
public:
    Look(const Plan& plan, const Target& target, CopyOutcome& copy)
        : m_tree(plan.index.tree), m_hasStamps(HasStamps(target.medium)), m_copy(copy) {}

    void Into(Folder& folder, NodeId above) {
        const std::vector<std::string> names = NamesIn(folder);
        for (NodeId node = m_tree.FirstChild(above); node != mhl::kNoNode;
             node = m_tree.NextSibling(node)) {
            LookAt(folder, node, names);
        }
    }

private:
    /// As the medium tells them: some give a file other letters, or less of its name, and find it
    /// by its own all the same. Sorted.
    static std::vector<std::string> NamesIn(Folder& folder) {
        std::vector<platform::FolderEntry> entries;
        static_cast<void>(folder.List(entries)); // what is not listed is not there
        std::vector<std::string> names;
        for (platform::FolderEntry& entry : entries) {
            names.push_back(std::move(entry.name));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    void LookAt(Folder& folder, NodeId node, const std::vector<std::string>& names) {
        const std::string name(m_tree.NameOf(node));
        FileInfo info;
        if (const platform::IoStatus status = folder.Stat(name, info); !status) {
            Tell(node, "is not there any more: " + status.reason);
        } else if (!std::binary_search(names.begin(), names.end(), name)) {
            Tell(node, "has another name there");
        } else if (!m_tree.IsFolder(node)) {
            if (node >= m_copy.seen.size() || !IsSame(m_copy.seen[node], info)) {
                Tell(node, "is not as it was when it was proven");
            }
        } else {
            std::unique_ptr<Folder> below;
            if (const platform::IoStatus opening = folder.OpenFolder(name, below); !opening) {
                Tell(node, "is not there any more: " + opening.reason);
            } else {
                Into(*below, node);
            }
        }
    }

    void Tell(NodeId node, const std::string& why) {
        m_copy.failures.Add(m_tree.PathOf(node), why);
    }

    /// Of times that a medium keeps by two seconds no more than these count.
    [[nodiscard]] bool IsSame(const FileInfo& one, const FileInfo& other) const {
        constexpr std::int64_t kCoarse = 2;
        if (other.kind != EntryKind::File || one.size != other.size) {
            return false;
        }
        return m_hasStamps ? IdOf(one) == IdOf(other) && one.modified == other.modified &&
                                 one.modifiedNanoseconds == other.modifiedNanoseconds &&
                                 one.changed == other.changed &&
                                 one.changedNanoseconds == other.changedNanoseconds
                           : std::max(one.modified, other.modified) -
                                     std::min(one.modified, other.modified) <=
                                 kCoarse;
    }

    const mhl::Tree& m_tree;
    bool m_hasStamps;
    CopyOutcome& m_copy;
};

} // namespace

void NoteArrival(const Target& target, const std::string& path, std::size_t node,
                 CopyOutcome& copy) {
    FileInfo info;
    if (const platform::IoStatus status =
            platform::Files().Stat(platform::PathIn(target.path, path), info);
        !status) {
        copy.failures.Add(path, "is not there any more: " + status.reason);
        return;
    }
    copy.seen.resize(std::max(copy.seen.size(), node + 1));
    copy.seen[node] = info;
}

bool IsStillThere(const Plan& plan, const Target& target) {
    FileInfo named;
    FileInfo reached;
    return target.copy != nullptr && target.opened->Stat(plan.name, named) &&
           platform::Files().Stat(target.path, reached) && IdOf(named) == target.begun &&
           IdOf(reached) == target.begun;
}

void LookAgain(const Plan& plan, const Target& target, CopyOutcome& copy) {
    if (!IsStillThere(plan, target)) {
        copy.ended = "It is not on the medium any more on which it was begun.";
    } else {
        const std::uint64_t before = copy.failures.Count();
        Look(plan, target, copy).Into(*target.copy, mhl::kScope);
        if (copy.failures.Count() != before) {
            copy.ended = "Not all that was proven there is still there as it was.";
        }
    }
    copy.proof.holdsAll &= copy.ended.empty();
}

} // namespace nqp2::offload
