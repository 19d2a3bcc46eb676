// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/record_taker.h"

#include <algorithm>
#include <utility>

namespace nqp2::mhl {

std::string RecordTaker::OwnPath(const std::string& path) const {
    std::string whole = m_part.PathOf(path);
    const std::size_t start = m_part.folder.empty() ? 0 : m_part.folder.size() + 1;
    const std::vector<std::string>& nested = m_state.nested;
    for (std::size_t slash = whole.find('/', start); !nested.empty() && slash != std::string::npos;
         slash = whole.find('/', slash + 1)) {
        if (std::binary_search(nested.begin(), nested.end(), whole.substr(0, slash))) {
            return {};
        }
    }
    return whole;
}

NodeId RecordTaker::Reach(std::string_view path, bool isFolder) {
    Tree& tree = m_state.expected;
    NodeId node = kScope;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(path.size(), name.size() + 1));
        const bool wantsFolder = isFolder || !path.empty();
        NodeId next = tree.Find(node, name);
        if (next == kNoNode) {
            next = wantsFolder ? *tree.AddFolder(node, name)
                               : *tree.AddFile(node, name, std::nullopt, std::nullopt);
        }
        if (tree.IsFolder(next) != wantsFolder) {
            return kNoNode;
        }
        node = next;
    }
    return node;
}

NodeId RecordTaker::Take(const std::string& path, bool isFolder, int line) {
    const std::string whole = OwnPath(path);
    if (whole.empty()) {
        return kNoNode;
    }
    const NodeId node = Reach(whole, isFolder);
    if (node == kNoNode) {
        m_tell(true, line, path + " is recorded as a file and as a folder");
        return kNoNode;
    }
    if (m_state.recorded.size() < m_state.expected.Size()) {
        // In steps, as the tree grows.
        m_state.recorded.resize(m_state.expected.Size());
        m_state.isGone.resize(m_state.expected.Size());
        m_state.hasFailed.resize(m_state.expected.Size());
    }
    if (m_state.recorded[node] == m_generation) {
        m_tell(true, line, path + " is recorded twice");
        return kNoNode;
    }
    m_state.recorded[node] = m_generation;
    m_state.isGone[node] = false;
    return node;
}

void RecordTaker::OnFile(const FileRecord& record) {
    const NodeId node = Take(record.path, false, record.line);
    if (node != kNoNode) {
        Merge(node, record);
        LeaveBehind(node, record.previousPath);
    }
}

void RecordTaker::Merge(NodeId file, const FileRecord& record) {
    Tree& tree = m_state.expected;
    Hashes known = tree.HashesOf(file);
    FormatSet fresh;
    bool hasFailed = false;
    for (const HashFormatFacts& each : kHashFormats) {
        const Action action = record.actions[static_cast<std::size_t>(each.format)];
        if (!record.hashes.Has(each.format) || action == Action::Failed) {
            hasFailed = hasFailed || record.hashes.Has(each.format);
        } else if (!known.Has(each.format)) {
            fresh |= each.format;
            known.Set(each.format, record.hashes.Digest(each.format));
        } else if (known.Digest(each.format) != record.hashes.Digest(each.format)) {
            m_tell(true, record.line,
                   "the " + std::string(each.name) + " of " + record.path +
                       " is another one than an earlier generation has");
        }
    }
    m_state.hasFailed[file] = hasFailed;
    m_state.formats |= fresh;
    if (!fresh.IsEmpty()) {
        tree.SetHashes(file, known);
    }
    for (const HashFormatFacts& each : kHashFormats) {
        if (fresh.Has(each.format)) {
            const Action action = record.actions[static_cast<std::size_t>(each.format)];
            tree.SetAction(file, each.format, action == Action::None ? Action::Original : action);
        }
    }
    if (!record.size || hasFailed) {
        return;
    }
    if (tree.SizeOf(file).value_or(*record.size) != *record.size) {
        m_tell(true, record.line,
               "the size of " + record.path + " is another one than an earlier generation has");
    } else {
        tree.SetSize(file, *record.size);
    }
}

void RecordTaker::LeaveBehind(NodeId now, const std::string& previousPath) {
    if (previousPath.empty()) {
        return;
    }
    Tree& tree = m_state.expected;
    const NodeId before = tree.Find(m_part.PathOf(previousPath));
    if (before == kNoNode || before == now || before >= m_state.recorded.size() ||
        m_state.recorded[before] == m_generation) {
        return;
    }
    m_state.isGone[before] = true;
    if (tree.IsFolder(before)) {
        return;
    }
    // What was known of the same content goes on to hold.
    Hashes known = tree.HashesOf(now);
    const Hashes earlier = tree.HashesOf(before);
    if (!known.SameAs(earlier).IsEmpty() && known.OtherThan(earlier).IsEmpty()) {
        known.Add(earlier);
        tree.SetHashes(now, known);
    }
}

void RecordTaker::OnFolder(const FolderRecord& record) {
    const NodeId node = Take(record.path, true, record.line);
    if (node != kNoNode) {
        m_state.expected.SetFolderHashes(node, record.hashes);
        m_state.formats |= record.hashes.content.Formats();
        LeaveBehind(node, record.previousPath);
    }
}

void RecordTaker::OnReference(const Reference& reference) {
    m_part.references.push_back(reference);
    m_part.references.back().path = m_part.PathOf(reference.path);
}

void RecordTaker::OnFinding(bool isFault, int line, std::string sentence) {
    m_tell(isFault, line, std::move(sentence));
}

void RecordTaker::TakeHead(const ManifestHead& head) {
    const NodeId top = m_state.expected.Find(m_part.folder);
    if (top != kNoNode && head.root) {
        m_state.expected.SetFolderHashes(top, *head.root);
        m_state.formats |= head.root->content.Formats();
    }
}

} // namespace nqp2::mhl
