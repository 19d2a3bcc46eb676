// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/walk_changes.h"

#include <optional>
#include <string_view>
#include <vector>

namespace nqp2::offload {

using mhl::NodeId;
using platform::EntryKind;
using platform::FileInfo;
using platform::Folder;

namespace {

/// Whether a file has not been written since, nor another put in its place. Of a folder what is in
/// it tells, and litter that is ignored changes its times.
bool IsSameState(const FileInfo& one, const FileInfo& other) {
    const bool isSame =
        one.kind == other.kind && one.device == other.device && one.inode == other.inode;
    return isSame &&
           (one.kind == EntryKind::Folder ||
            (one.size == other.size && one.modified == other.modified &&
             one.modifiedNanoseconds == other.modifiedNanoseconds && one.changed == other.changed &&
             one.changedNanoseconds == other.changedNanoseconds));
}

void AddAll(const OddEntries& from, OddEntries& to) {
    for (const OddEntry& each : from.Kept()) {
        to.Add(each.path, each.why);
    }
}

} // namespace

OddEntries ChangesSince(const FolderIndex& before, Folder& root, const WalkRules& rules,
                        const OnFolder& onFolder) {
    OddEntries changes;
    std::vector<bool> isMet(before.tree.Size());
    const auto take = [&](NodeId parent, const std::string& path, std::string_view name,
                          const FileInfo& info) {
        const NodeId node = before.tree.Find(parent, name);
        if (node == mhl::kNoNode) {
            changes.Add(path, "is new");
            return std::optional<NodeId>();
        }
        isMet[node] = true;
        const bool isSame = IsSameState(before.InfoOf(node), info);
        if (!isSame) {
            changes.Add(path, "has changed");
        }
        return isSame ? std::optional(node) : std::nullopt;
    };
    WalkFindings findings;
    WalkThrough(root, rules, onFolder, take, findings);
    for (NodeId node = 1; node < before.tree.Size(); ++node) {
        if (!isMet[node] &&
            (before.tree.ParentOf(node) == mhl::kScope || isMet[before.tree.ParentOf(node)])) {
            changes.Add(before.tree.PathOf(node), "is not there any more, or not reached");
        }
    }
    if (findings.unread.Count() != before.unread.Count()) {
        AddAll(findings.unread, changes);
    }
    if (findings.leftOut.Count() != before.leftOut.Count()) {
        AddAll(findings.leftOut, changes);
    }
    return changes;
}

void TellStrangeEntries(const mhl::Tree& tree, Folder& root, const WalkRules& rules,
                        const OnFolder& onFolder, const TellEntry& tell) {
    const auto take = [&](NodeId parent, const std::string& path, std::string_view name,
                          const FileInfo& /*info*/) {
        const NodeId node = tree.Find(parent, name);
        if (node == mhl::kNoNode) {
            tell({path, "is not the card's"});
        }
        return node == mhl::kNoNode ? std::nullopt : std::optional(node);
    };
    WalkFindings findings;
    WalkThrough(root, rules, onFolder, take, findings);
    for (const OddEntry& each : findings.leftOut.Kept()) {
        tell(each);
    }
}

} // namespace nqp2::offload
