// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/chain.h"
#include "offload/mhl/ignore.h"
#include "offload/mhl/manifest.h"
#include "platform/folder.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// A generation that was read.
struct Generation {
    std::uint64_t number = 0;
    std::string name; ///< of the manifest's file
    Hashes c4;        ///< of its bytes as they lie there
    bool isWhole = false;
    ManifestHead head;
};

/// A generation that was added.
struct AddedGeneration {
    std::string path; ///< of the manifest, below the outermost scope
    std::uint64_t number = 0;
    Hashes c4;
    FolderHashes root;
};

struct HistoryState;

/// What all generations of a folder's history, and those of the histories below it, say.
class History {
public:
    /// Reads all of it: the chain first, then every manifest. What cannot be read is a finding;
    /// only want of memory throws. Looks through the folders below the scope for other histories,
    /// without following links.
    static History Open(platform::FileSystem& files, const std::string& scope);
    /// The same of a folder that is open: generations are added to this one, whatever becomes of
    /// the path that led to it.
    static History Open(std::shared_ptr<platform::Folder> scope);

    History(History&&) noexcept;
    History& operator=(History&&) noexcept;
    ~History();

    /// Whether the scope has a chain or manifests.
    [[nodiscard]] bool Exists() const;
    [[nodiscard]] bool HasChain() const;
    /// Its own generations by number; nothing of the histories below it.
    [[nodiscard]] const std::vector<Generation>& Generations() const;
    /// Manifests that the chain does not name: a killed writer's, or a stranger's.
    [[nodiscard]] const std::vector<std::string>& Unlisted() const;
    /// Faults and remarks of this history and of those below it.
    [[nodiscard]] const Findings& Found() const;
    /// Adds what is known of this history from elsewhere.
    void Tell(Finding finding);
    /// Folders below the scope that have histories of their own, as paths in the order of their
    /// bytes.
    [[nodiscard]] const std::vector<std::string>& NestedFolders() const;

    /// What is expected below the scope: each file with all hashes that hold for it (action
    /// Original or Verified), folders with the hashes of the newest generation. Files that were
    /// renamed away are not in it.
    [[nodiscard]] const Tree& Expected() const;
    /// Whether a node of Expected counts still: recorded, and not renamed away since.
    [[nodiscard]] bool IsExpected(NodeId node) const;
    /// Whether the newest generation of its history records a node, and not as failed: it made its
    /// folders' hashes of these, and of files that failed then.
    [[nodiscard]] bool IsInNewest(NodeId node) const;
    /// The patterns of all generations of this history and those below it, with the default ones.
    [[nodiscard]] const IgnoreList& Ignored() const;
    /// Adds one more pattern to them, for the generations to come as well. False when there are too
    /// many.
    bool Ignore(std::string_view pattern);
    /// The formats that are recorded for files or folders anywhere.
    [[nodiscard]] FormatSet Formats() const;

    /// Adds a generation of the whole scope to each history below it, the innermost first, and to
    /// this one, which is made when there is none. `tree`: everything that is there and not
    /// ignored, sorted, with hashes, actions (comparison.h) and folder hashes. Of the head
    /// `ignored` and `root` do not count. A history with faults takes no generation. What was
    /// added before a failure stays, and is sound. This object is to be opened anew afterwards.
    platform::IoStatus AddGeneration(const ManifestHead& head, const Tree& tree,
                                     std::vector<AddedGeneration>& added) const;

private:
    explicit History(std::unique_ptr<HistoryState> state);
    std::unique_ptr<HistoryState> m_state;
};

/// "0001_A001_2026-11-21_080910Z.mhl". What a file name cannot hold is replaced.
std::string ManifestName(std::uint64_t number, std::string_view folder, std::int64_t created);

} // namespace nqp2::mhl
