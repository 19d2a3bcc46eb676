// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/folder_index.h"

#include <functional>
#include <utility>

namespace nqp2::offload {

using mhl::NodeId;
using platform::EntryKind;
using platform::FileInfo;

void OddEntries::Add(std::string path, std::string why) {
    ++m_count;
    if (m_kept.size() < kMostKept) {
        m_kept.push_back({std::move(path), std::move(why)});
    }
}

void UnseenEntries::Add(std::string path, std::string why) {
    m_hashes.insert(std::hash<std::string_view>()(path));
    OddEntries::Add(std::move(path), std::move(why));
}

bool UnseenEntries::Hold(std::string_view path) const {
    for (;;) {
        if (m_hashes.contains(std::hash<std::string_view>()(path))) {
            return true;
        }
        if (path.empty()) {
            return false;
        }
        const std::size_t slash = path.rfind('/');
        path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
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

} // namespace nqp2::offload
