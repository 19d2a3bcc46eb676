// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// Adds a generation: to each history the manifest first, the chain when that is safe.

#include "offload/mhl/history_state.h"
#include "platform/folder.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace nqp2::mhl {
namespace {

using platform::IoError;
using platform::IoStatus;

constexpr std::chrono::seconds kPatience{5};

IoStatus OpenOrMake(platform::Folder& parent, const std::string& name,
                    std::unique_ptr<platform::Folder>& folder) {
    IoStatus status = parent.OpenFolder(name, folder);
    if (status.error != IoError::NotFound) {
        return status;
    }
    status = parent.MakeFolder(name);
    return status || status.error == IoError::Exists ? parent.OpenFolder(name, folder) : status;
}

/// A manifest in the making: hashed while it is written, and hashed again as the medium has it.
class ManifestFile {
public:
    IoStatus Begin(platform::Folder& folder, const std::string& name) {
        return folder.Create(name, m_writer);
    }
    IoStatus Write(std::string_view bytes) {
        IoStatus status = m_writer->WriteAt(m_size, bytes);
        m_hasher.Add(bytes);
        m_size += bytes.size();
        return status;
    }
    IoStatus Finish(Hashes& c4) {
        c4 = m_hasher.Value();
        IoStatus status = m_writer->Flush();
        std::string block(kManifestPiece, '\0');
        std::size_t count = 1;
        for (std::uint64_t position = 0; status && count > 0; position += count) {
            status = m_writer->ReadAt(position, block.data(), block.size(), count);
            m_hasher.Add(std::string_view(block.data(), status ? count : 0));
        }
        if (status && !(m_hasher.Value() == c4)) {
            return {IoError::Device, "what the medium gives back is not what was written"};
        }
        return status ? m_writer->Commit() : status;
    }

private:
    std::unique_ptr<platform::FileWriter> m_writer;
    Hasher m_hasher{HashFormat::C4};
    std::uint64_t m_size = 0;
};

class GenerationWriter {
public:
    GenerationWriter(const HistoryState& state, const ManifestHead& head, const Tree& tree)
        : m_state(state), m_head(head), m_tree(tree) {}

    IoStatus Write(std::vector<AddedGeneration>& added) {
        IoStatus status;
        // Behind a folder in the order of paths come those in it.
        for (auto part = m_state.parts.rbegin(); status && part != m_state.parts.rend(); ++part) {
            const NodeId node = m_tree.Find(part->folder);
            if (node != kNoNode && m_tree.IsFolder(node)) {
                status = WritePart(*part, node, added);
            }
        }
        return status;
    }

private:
    /// The newest generation of a history, and where it is.
    struct Newest {
        std::string folder;
        std::string path; ///< of the manifest
        Hashes c4;
        NodeId node;
    };

    IoStatus WritePart(const HistoryPart& part, NodeId node, std::vector<AddedGeneration>& added) {
        std::unique_ptr<platform::Folder> folder;
        IoStatus status = OpenHistory(part, folder);
        if (status) {
            status = folder->Lock(kPatience);
        }
        if (status) {
            status = CheckUnchanged(part, *folder);
        }
        AddedGeneration made;
        made.number = part.chain.empty() ? 1 : part.chain.back().number + 1;
        const std::string name = ManifestName(made.number, NameOf(part, node), m_head.created);
        if (status) {
            status = WriteManifestFile(part, node, *folder, name, made.c4);
        }
        if (status) {
            std::vector<ChainEntry> chain = part.chain;
            chain.push_back({made.number, name, made.c4, 0});
            status = folder->WriteWhole(std::string(kChainFile), ChainText(chain));
        }
        if (status) {
            made.path = part.PathOf(std::string(kHistoryFolder) + "/" + name);
            made.root = m_tree.FolderHashesOf(node);
            m_newest.push_back({part.folder, made.path, made.c4, node});
            added.push_back(std::move(made));
        }
        return status;
    }

    IoStatus OpenHistory(const HistoryPart& part, std::unique_ptr<platform::Folder>& folder) {
        std::unique_ptr<platform::Folder> below;
        if (!part.folder.empty()) {
            if (IoStatus status = platform::OpenBelow(*m_state.scope, part.folder, below);
                !status) {
                return status;
            }
        }
        return OpenOrMake(below != nullptr ? *below : *m_state.scope, std::string(kHistoryFolder),
                          folder);
    }

    /// Another writer may have been here since the history was read.
    static IoStatus CheckUnchanged(const HistoryPart& part, platform::Folder& folder) {
        std::string bytes;
        IoStatus status = folder.Read(std::string(kChainFile), kMaxChainBytes, bytes);
        if (!status && status.error != IoError::NotFound) {
            return status;
        }
        Hasher hasher(HashFormat::C4);
        hasher.Add(bytes);
        const bool isSame = static_cast<bool>(status) == part.hasChain &&
                            (!status || hasher.Value() == part.chainHash);
        return isSame ? IoStatus{} : IoStatus{IoError::Busy, "the history was changed meanwhile"};
    }

    [[nodiscard]] std::string NameOf(const HistoryPart& part, NodeId node) const {
        if (!part.folder.empty()) {
            return std::string(m_tree.NameOf(node));
        }
        std::string path = m_state.scope->Path();
        while (path.size() > 1 && path.ends_with('/')) {
            path.pop_back();
        }
        return platform::NamePart(path);
    }

    IoStatus WriteManifestFile(const HistoryPart& part, NodeId node, platform::Folder& folder,
                               const std::string& name, Hashes& c4) {
        std::vector<NodeId> nested;
        std::vector<Reference> references;
        Inside(part, nested, references);
        ManifestFile file;
        IoStatus status = file.Begin(folder, name);
        if (status) {
            status = WriteManifest(HeadOf(part), {&m_tree, node, nested, references},
                                   [&](std::string_view bytes) { return file.Write(bytes); });
        }
        return status ? file.Finish(c4) : status;
    }

    /// The histories below one: all their folders, and references to the nearest ones.
    void Inside(const HistoryPart& part, std::vector<NodeId>& nested,
                std::vector<Reference>& references) const {
        const std::string start = part.PathOf("");
        for (const Newest& each : m_newest) {
            if (!each.folder.starts_with(start)) {
                continue;
            }
            nested.push_back(each.node);
            const bool isNearest =
                std::none_of(m_newest.begin(), m_newest.end(), [&](const Newest& other) {
                    return other.folder.starts_with(start) &&
                           each.folder.starts_with(other.folder + "/");
                });
            if (isNearest) {
                references.push_back({each.path.substr(start.size()), each.c4, 0});
            }
        }
        std::sort(nested.begin(), nested.end());
    }

    [[nodiscard]] ManifestHead HeadOf(const HistoryPart& part) const {
        ManifestHead head = m_head;
        IgnoreList ignored = part.ignored;
        const IgnoreList always = IgnoreList::Default();
        for (const std::string& each : always.Patterns()) {
            static_cast<void>(ignored.Add(each)); // with as many there as it can hold, these do
        }
        head.ignored = ignored.Patterns();
        return head;
    }

    const HistoryState& m_state;
    const ManifestHead& m_head;
    const Tree& m_tree;
    std::vector<Newest> m_newest;
};

} // namespace

IoStatus History::AddGeneration(const ManifestHead& head, const Tree& tree,
                                std::vector<AddedGeneration>& added) const {
    if (Found().Faults() > 0) {
        return {IoError::Other, "the history has faults"};
    }
    return GenerationWriter(*m_state, head, tree).Write(added);
}

} // namespace nqp2::mhl
