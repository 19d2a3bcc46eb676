// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/walk.h"

#include "copy/failure.h"
#include "offload/mhl/chain.h"
#include "offload/mhl/name_rules.h"
#include "platform/durable_file.h"

#include <fmt/core.h>

#include <functional>
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

namespace {

/// Of what a folder of lists holds. Hidden ones are not read.
bool IsListName(const std::string& name) {
    return name == mhl::kChainFile ||
           (name.ends_with(mhl::kManifestEnding) && !name.starts_with('.'));
}

class Walk {
public:
    Walk(const WalkRules& rules, const OnFolder& onFolder, TakeEntry take, WalkFindings& findings)
        : m_rules(rules), m_onFolder(onFolder), m_take(std::move(take)), m_findings(findings) {}

    /// From the top; `info` is its own.
    void Run(Folder& root, const FileInfo& info) {
        m_device = info.device;
        Enter(root, mhl::kScope, "", info);
    }

private:
    void Enter(Folder& folder, NodeId node, const std::string& path, const FileInfo& info) {
        if (!m_onFolder(path, info)) {
            throw copy::Failure("Cancelled.");
        }
        std::vector<FolderEntry> entries;
        if (const IoStatus status = folder.List(entries); !status) {
            m_findings.unread.Add(path, status.reason);
        }
        for (const FolderEntry& entry : entries) {
            Take(folder, node, path.empty() ? entry.name : path + '/' + entry.name, entry.name);
        }
    }

    void Take(Folder& folder, NodeId parent, const std::string& path, const std::string& name) {
        FileInfo info;
        if (const IoStatus status = folder.Stat(name, info); !status) {
            m_findings.unread.Add(path, status.reason);
            return;
        }
        const bool isFolder = info.kind == EntryKind::Folder;
        if (isFolder && name == mhl::kHistoryFolder) {
            m_findings.histories.push_back(path);
            if (m_rules.areListsLookedInto) {
                LookIntoLists(folder, path, name);
            }
        } else if (m_rules.ignored.IsIgnoredItself(path, isFolder)) {
            m_findings.ignored.Add(path, "fits a pattern");
        } else if (const std::string fault = FaultOf(info, name, path); !fault.empty()) {
            m_findings.leftOut.Add(path, fault);
        } else if (const std::optional<NodeId> node = m_take(parent, path, name, info);
                   node && isFolder) {
            Open(folder, *node, path, name, info);
        }
    }

    /// Nothing but lists is copied from there, and nothing else has a place in a list.
    void LookIntoLists(Folder& folder, const std::string& path, const std::string& name) {
        std::unique_ptr<Folder> lists;
        std::vector<FolderEntry> entries;
        IoStatus status = folder.OpenFolder(name, lists);
        if (status) {
            status = lists->List(entries);
        }
        if (!status) {
            m_findings.unread.Add(path, status.reason);
        }
        for (const FolderEntry& entry : entries) {
            const std::string below = path + '/' + entry.name;
            FileInfo info;
            if (const IoStatus found = lists->Stat(entry.name, info); !found) {
                m_findings.unread.Add(below, found.reason);
            } else if (m_rules.ignored.IsIgnoredItself(below, info.kind == EntryKind::Folder)) {
                m_findings.ignored.Add(below, "fits a pattern");
            } else if (info.kind != EntryKind::File || !IsListName(entry.name)) {
                m_findings.leftOut.Add(below, "is among the lists of hashes and is none");
            }
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
        if (m_rules.foreign != nullptr &&
            m_rules.foreign->IsIgnoredItself(path, info.kind == EntryKind::Folder)) {
            return "is ignored by the card's own list";
        }
        return path.size() > mhl::kMaxPathBytes || m_depth >= mhl::kMaxPathParts
                   ? "is too deep for a list"
                   : "";
    }

    void Open(Folder& folder, NodeId node, const std::string& path, const std::string& name,
              const FileInfo& info) {
        std::unique_ptr<Folder> below;
        if (const IoStatus status = folder.OpenFolder(name, below); !status) {
            m_findings.unread.Add(path, status.reason);
            return;
        }
        ++m_depth;
        Enter(*below, node, path, info);
        --m_depth;
    }

    const WalkRules& m_rules;
    const OnFolder& m_onFolder;
    TakeEntry m_take;
    WalkFindings& m_findings;
    std::uint64_t m_device = 0;
    std::size_t m_depth = 1; ///< parts of the paths in the folder
};

/// The root's own facts.
FileInfo InfoOfRoot(const Folder& root) {
    FileInfo info;
    copy::Require(platform::Files().Stat(root.Path(), info), "read", root.Path());
    return info;
}

} // namespace

void WalkThrough(Folder& root, const WalkRules& rules, const OnFolder& onFolder, TakeEntry take,
                 WalkFindings& findings) {
    Walk walk(rules, onFolder, std::move(take), findings);
    walk.Run(root, InfoOfRoot(root));
}

void WalkFolder(Folder& root, const WalkRules& rules, const OnFolder& onFolder,
                FolderIndex& index) {
    const FileInfo top = InfoOfRoot(root);
    index.Note(mhl::kScope, top);
    const auto take = [&](NodeId parent, const std::string& path, std::string_view name,
                          const FileInfo& info) {
        const bool isFolder = info.kind == EntryKind::Folder;
        const std::optional<NodeId> node =
            isFolder ? index.tree.AddFolder(parent, name)
                     : index.tree.AddFile(parent, name, info.size, info.modified);
        if (!node) {
            index.unread.Add(path, "is listed twice");
            return node;
        }
        index.Note(*node, info);
        index.bytes += isFolder ? 0 : info.size;
        if (!isFolder && (index.largest == mhl::kNoNode ||
                          info.size > index.tree.SizeOf(index.largest).value_or(0))) {
            index.largest = *node;
        }
        return node;
    };
    Walk(rules, onFolder, take, index).Run(root, top);
    index.tree.Sort();
}

} // namespace nqp2::offload
