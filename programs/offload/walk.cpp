// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/walk.h"

#include "copy/failure.h"
#include "offload/mhl/chain.h"
#include "offload/mhl/name_rules.h"
#include "platform/durable_file.h"

#include <fmt/core.h>

#include <memory>
#include <optional>
#include <utility>

namespace nqp2::offload {

using mhl::NodeId;
using platform::EntryKind;
using platform::FileInfo;
using platform::Folder;
using platform::FolderEntry;
using platform::IoStatus;

void OddEntries::Add(std::string path, std::string why) {
    ++m_count;
    if (m_kept.size() < kMostKept) {
        m_kept.push_back({std::move(path), std::move(why)});
    }
}

FileInfo FolderIndex::InfoOf(NodeId node) const {
    const Stamp& stamp = m_stamps[node];
    FileInfo info;
    info.kind = tree.IsFolder(node) ? EntryKind::Folder : EntryKind::File;
    info.size = tree.SizeOf(node).value_or(0);
    info.modified = tree.ModifiedOf(node).value_or(0);
    info.modifiedNanoseconds = stamp.modifiedNanoseconds;
    info.device = m_device;
    info.inode = stamp.inode;
    info.changed = stamp.changed;
    info.changedNanoseconds = stamp.changedNanoseconds;
    return info;
}

void FolderIndex::Note(NodeId node, const FileInfo& info) {
    if (node == mhl::kScope) {
        m_device = info.device;
    }
    m_stamps.resize(node + std::size_t{1});
    m_stamps[node] = {info.inode, info.changed, info.modifiedNanoseconds, info.changedNanoseconds};
    tree.SetModified(node, info.modified);
}

namespace {

class Walk {
public:
    Walk(const mhl::IgnoreList& ignored, const OnFolder& onFolder, FolderIndex& index)
        : m_ignored(ignored), m_onFolder(onFolder), m_index(index) {}

    void Enter(Folder& folder, NodeId node, const std::string& path, const FileInfo& info) {
        if (node == mhl::kScope) {
            m_device = info.device;
        }
        m_index.Note(node, info);
        if (!m_onFolder(path, info)) {
            throw copy::Failure("Cancelled.");
        }
        std::vector<FolderEntry> entries;
        if (const IoStatus status = folder.List(entries); !status) {
            m_index.unread.Add(path, status.reason);
        }
        for (const FolderEntry& entry : entries) {
            Take(folder, node, path.empty() ? entry.name : path + '/' + entry.name, entry.name);
        }
    }

private:
    void Take(Folder& folder, NodeId parent, const std::string& path, const std::string& name) {
        FileInfo info;
        if (const IoStatus status = folder.Stat(name, info); !status) {
            m_index.unread.Add(path, status.reason);
            return;
        }
        const bool isFolder = info.kind == EntryKind::Folder;
        if (isFolder && name == mhl::kHistoryFolder) {
            m_index.histories.push_back(path);
            return;
        }
        if (m_ignored.IsIgnoredItself(path, isFolder)) {
            m_index.ignored.Add(path, "fits a pattern");
        } else if (const std::string fault = FaultOf(info, name, path); !fault.empty()) {
            m_index.leftOut.Add(path, fault);
        } else {
            Add(folder, parent, path, name, info);
        }
    }

    [[nodiscard]] std::string FaultOf(const FileInfo& info, const std::string& name,
                                      const std::string& path) const {
        if (info.kind == EntryKind::Link) {
            return "is a link";
        }
        if (info.kind == EntryKind::Other) {
            return "is neither file nor folder";
        }
        if (info.device != m_device) {
            return "is on another file system, which hides what the card has there";
        }
        if (platform::IsLeftoverName(name)) {
            return "is what a killed program left of a file";
        }
        if (const std::string fault = mhl::NameFault(name); !fault.empty()) {
            return "has a name that no list can hold: it " + fault;
        }
        return path.size() > mhl::kMaxPathBytes || m_depth >= mhl::kMaxPathParts
                   ? "is too deep for a list"
                   : "";
    }

    void Add(Folder& folder, NodeId parent, const std::string& path, const std::string& name,
             const FileInfo& info) {
        const bool isFolder = info.kind == EntryKind::Folder;
        const std::optional<NodeId> node =
            isFolder ? m_index.tree.AddFolder(parent, name)
                     : m_index.tree.AddFile(parent, name, info.size, info.modified);
        if (!node) {
            m_index.unread.Add(path, "is listed twice");
            return;
        }
        if (isFolder) {
            Open(folder, *node, path, name, info);
            return;
        }
        m_index.Note(*node, info);
        m_index.bytes += info.size;
        if (m_index.largest == mhl::kNoNode ||
            info.size > m_index.tree.SizeOf(m_index.largest).value_or(0)) {
            m_index.largest = *node;
        }
    }

    void Open(Folder& folder, NodeId node, const std::string& path, const std::string& name,
              const FileInfo& info) {
        m_index.Note(node, info);
        std::unique_ptr<Folder> below;
        if (const IoStatus status = folder.OpenFolder(name, below); !status) {
            m_index.unread.Add(path, status.reason);
            return;
        }
        ++m_depth;
        Enter(*below, node, path, info);
        --m_depth;
    }

    const mhl::IgnoreList& m_ignored;
    const OnFolder& m_onFolder;
    FolderIndex& m_index;
    std::uint64_t m_device = 0;
    std::size_t m_depth = 1; ///< parts of the paths in the folder
};

bool IsSameState(const FileInfo& one, const FileInfo& other) {
    return one.size == other.size && one.modified == other.modified &&
           one.modifiedNanoseconds == other.modifiedNanoseconds && one.device == other.device &&
           one.inode == other.inode && one.changed == other.changed &&
           one.changedNanoseconds == other.changedNanoseconds;
}

} // namespace

void WalkFolder(Folder& root, const mhl::IgnoreList& ignored, const OnFolder& onFolder,
                FolderIndex& index) {
    FileInfo info;
    copy::Require(platform::Files().Stat(root.Path(), info), "read", root.Path());
    Walk(ignored, onFolder, index).Enter(root, mhl::kScope, "", info);
    index.tree.Sort();
}

bool IsSameIndex(const FolderIndex& one, const FolderIndex& other) {
    NodeId left = one.tree.FirstInPostOrder(mhl::kScope);
    NodeId right = other.tree.FirstInPostOrder(mhl::kScope);
    for (; left != mhl::kNoNode && right != mhl::kNoNode;
         left = one.tree.NextInPostOrder(left, mhl::kScope),
         right = other.tree.NextInPostOrder(right, mhl::kScope)) {
        if (one.tree.NameOf(left) != other.tree.NameOf(right) ||
            one.tree.IsFolder(left) != other.tree.IsFolder(right) ||
            !IsSameState(one.InfoOf(left), other.InfoOf(right))) {
            return false;
        }
    }
    return left == right && one.unread.Count() == other.unread.Count() &&
           one.leftOut.Count() == other.leftOut.Count();
}

} // namespace nqp2::offload
