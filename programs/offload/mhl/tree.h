// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/mhl/byte_store.h"
#include "offload/mhl/hash_format.h"

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nqp2::mhl {

/// A file or folder of a Tree; they are numbered as they are added, from 0, which is the scope.
using NodeId = std::uint32_t;
inline constexpr NodeId kScope = 0;
inline constexpr NodeId kNoNode = ~NodeId{0};

/// What a generation says of a hash.
enum class Action : std::uint8_t { None, Original, Verified, Failed };

/// The two hashes of a folder, in the same formats.
struct FolderHashes {
    Hashes content;
    Hashes structure;
};

class FolderHasher;

/// The files and folders of a scope with their hashes: those on a disk, or those that a history
/// expects. About 100 bytes a file beside its name. Not for several threads at once, but that
/// reading is for any number.
class Tree {
public:
    Tree();

    /// Adds what is not there yet; std::nullopt for a name that the folder has already. Throws
    /// std::length_error when there are more than a tree can hold.
    std::optional<NodeId> AddFolder(NodeId parent, std::string_view name);
    /// `modified`: seconds since 1970 UTC.
    std::optional<NodeId> AddFile(NodeId parent, std::string_view name,
                                  std::optional<std::uint64_t> size,
                                  std::optional<std::int64_t> modified);

    /// Nodes in all, the scope included.
    [[nodiscard]] std::size_t Size() const { return m_nodes.size(); }
    [[nodiscard]] std::size_t FileCount() const { return m_files; }
    [[nodiscard]] NodeId Find(NodeId parent, std::string_view name) const; ///< kNoNode: none
    /// "A/B" below the scope, without a slash at its end; "" is the scope.
    [[nodiscard]] NodeId Find(std::string_view path) const;
    [[nodiscard]] std::string PathOf(NodeId node) const;
    /// The path below another scope than the tree's.
    [[nodiscard]] std::string PathOf(NodeId node, NodeId scope) const;
    [[nodiscard]] std::string_view NameOf(NodeId node) const;
    [[nodiscard]] NodeId ParentOf(NodeId node) const { return m_nodes[node].parent; }
    [[nodiscard]] bool IsFolder(NodeId node) const { return m_nodes[node].isFolder; }
    [[nodiscard]] std::optional<std::uint64_t> SizeOf(NodeId node) const;
    void SetSize(NodeId node, std::uint64_t size) { m_nodes[node].size = size; }
    [[nodiscard]] std::optional<std::int64_t> ModifiedOf(NodeId node) const;
    void SetModified(NodeId node, std::int64_t modified) { m_nodes[node].modified = modified; }

    /// Puts all folders' children into the order of their names' bytes.
    void Sort();
    [[nodiscard]] NodeId FirstChild(NodeId folder) const { return m_nodes[folder].firstChild; }
    [[nodiscard]] NodeId NextSibling(NodeId node) const { return m_nodes[node].nextSibling; }
    /// Everything below a folder, and then itself: first what is in a folder's folders, then its
    /// own files, each in the children's order; a folder comes right behind its content.
    /// What is below the `closed` folders, which are sorted, is left out.
    using Closed = std::span<const NodeId>;
    [[nodiscard]] NodeId FirstInPostOrder(NodeId top, Closed closed = {}) const;
    /// kNoNode behind `top`.
    [[nodiscard]] NodeId NextInPostOrder(NodeId node, NodeId top, Closed closed = {}) const;

    /// Of a file.
    void SetHashes(NodeId file, const Hashes& hashes);
    [[nodiscard]] Hashes HashesOf(NodeId file) const;
    [[nodiscard]] FormatSet FormatsOf(NodeId node) const {
        return FormatSet::Of(m_nodes[node].formats);
    }
    void SetAction(NodeId file, HashFormat format, Action action);
    void SetActions(NodeId file, Action action); ///< of all its hashes
    [[nodiscard]] Action ActionOf(NodeId file, HashFormat format) const;
    /// The path below the scope that a file had before this generation; "" for the same.
    void SetPreviousPath(NodeId node, std::string path);
    [[nodiscard]] const std::string& PreviousPathOf(NodeId node) const;

    void SetFolderHashes(NodeId folder, const FolderHashes& hashes);
    [[nodiscard]] FolderHashes FolderHashesOf(NodeId folder) const;
    /// Computes those of all folders, the scope included (its are the root hash), from the files'
    /// hashes: in those of the formats that all files below a folder have.
    void HashFolders(FormatSet formats);

    /// Bytes that the tree takes.
    [[nodiscard]] std::size_t BytesUsed() const;

private:
    static constexpr std::uint64_t kNoSize = ~std::uint64_t{0};
    static constexpr std::int64_t kNoTime = INT64_MIN;

    struct Node {
        std::uint64_t size = kNoSize;
        std::int64_t modified = kNoTime;
        NodeId parent = kNoNode;
        NodeId firstChild = kNoNode;
        NodeId nextSibling = kNoNode;
        ByteStore::Place name = 0;
        ByteStore::Place digests = 0; ///< of a folder those of content, then those of structure
        std::uint16_t nameLength = 0;
        std::uint16_t actions = 0; ///< two bits a format
        std::uint8_t formats = 0;
        bool isFolder = false;
    };

    std::optional<NodeId> Add(NodeId parent, std::string_view name, Node node);
    [[nodiscard]] std::size_t SlotOf(NodeId parent, std::string_view name) const;
    void GrowIndex();
    void StoreDigests(NodeId node, const Hashes& first, const Hashes* second);
    [[nodiscard]] NodeId FirstBelow(NodeId folder, Closed closed) const;
    [[nodiscard]] NodeId NextOfKind(NodeId sibling, bool isFolder) const;
    [[nodiscard]] std::string_view DigestOf(NodeId node, HashFormat format, bool isStructure) const;
    void HashFolder(NodeId folder, FormatSet formats, FolderHasher& hasher);
    [[nodiscard]] Hashes LoadDigests(NodeId node, std::size_t start) const;
    void SortChildren(NodeId folder, std::vector<NodeId>& scratch);

    std::deque<Node> m_nodes;
    ByteStore m_bytes;
    std::vector<NodeId> m_index; ///< by parent and name, open addressing
    std::map<NodeId, std::string> m_previousPaths;
    std::size_t m_files = 0;
};

} // namespace nqp2::mhl
