// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/tree.h"

#include <algorithm>
#include <limits>
#include <random>
#include <stdexcept>
#include <xxhash.h>

namespace nqp2::mhl {
namespace {

constexpr std::size_t kFirstSlots = 64;
constexpr unsigned kActionBits = 2;
constexpr unsigned kActionMask = 3;

unsigned ShiftOf(HashFormat format) {
    return static_cast<unsigned>(format) * kActionBits;
}

/// Nobody who chooses names may know where they fall in the index.
std::uint64_t Seed() {
    static const std::uint64_t seed = [] {
        std::random_device device;
        return (std::uint64_t{device()} << 32U) | device();
    }();
    return seed;
}

} // namespace

Tree::Tree() : m_index(kFirstSlots, kNoNode) {
    Node scope;
    scope.isFolder = true;
    scope.name = m_bytes.Add({});
    m_nodes.push_back(scope);
}

std::optional<NodeId> Tree::AddFolder(NodeId parent, std::string_view name) {
    Node node;
    node.isFolder = true;
    return Add(parent, name, node);
}

std::optional<NodeId> Tree::AddFile(NodeId parent, std::string_view name,
                                    std::optional<std::uint64_t> size,
                                    std::optional<std::int64_t> modified) {
    Node node;
    node.size = size.value_or(kNoSize);
    node.modified = modified.value_or(kNoTime);
    const std::optional<NodeId> added = Add(parent, name, node);
    m_files += added ? 1U : 0U;
    return added;
}

std::optional<NodeId> Tree::Add(NodeId parent, std::string_view name, Node node) {
    if (name.size() > std::numeric_limits<std::uint16_t>::max() || m_nodes.size() >= kNoNode) {
        throw std::length_error("there are too many files");
    }
    const std::size_t slot = SlotOf(parent, name);
    if (m_index[slot] != kNoNode) {
        return std::nullopt;
    }
    const auto id = static_cast<NodeId>(m_nodes.size());
    node.parent = parent;
    node.name = m_bytes.Add(name);
    node.nameLength = static_cast<std::uint16_t>(name.size());
    node.nextSibling = m_nodes[parent].firstChild;
    m_nodes.push_back(node);
    m_nodes[parent].firstChild = id;
    m_index[slot] = id;
    // At most three quarters are taken.
    if (m_nodes.size() > m_index.size() / 4 * 3) {
        GrowIndex();
    }
    return id;
}

std::size_t Tree::SlotOf(NodeId parent, std::string_view name) const {
    const std::size_t mask = m_index.size() - 1;
    const auto isIt = [&](NodeId node) {
        return m_nodes[node].parent == parent && NameOf(node) == name;
    };
    std::size_t slot = XXH3_64bits_withSeed(name.data(), name.size(), Seed() + parent) & mask;
    while (m_index[slot] != kNoNode && !isIt(m_index[slot])) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

void Tree::GrowIndex() {
    const std::size_t slots = m_index.size() * 2;
    m_index = {};
    m_index.resize(slots, kNoNode);
    for (NodeId node = kScope + 1; node < m_nodes.size(); ++node) {
        m_index[SlotOf(m_nodes[node].parent, NameOf(node))] = node;
    }
}

NodeId Tree::Find(NodeId parent, std::string_view name) const {
    return m_index[SlotOf(parent, name)];
}

NodeId Tree::Find(std::string_view path) const {
    NodeId node = kScope;
    while (!path.empty() && node != kNoNode) {
        const std::string_view name = path.substr(0, path.find('/'));
        node = Find(node, name);
        path.remove_prefix(std::min(path.size(), name.size() + 1));
    }
    return node;
}

std::string Tree::PathOf(NodeId node) const {
    return PathOf(node, kScope);
}

std::string Tree::PathOf(NodeId node, NodeId scope) const {
    std::size_t length = 0;
    for (NodeId each = node; each != scope; each = m_nodes[each].parent) {
        length += m_nodes[each].nameLength + 1U;
    }
    std::string path(length > 0 ? length - 1 : 0, '/');
    std::size_t end = path.size();
    for (NodeId each = node; each != scope; each = m_nodes[each].parent) {
        const std::string_view name = NameOf(each);
        name.copy(path.data() + (end - name.size()), name.size());
        end -= std::min(end, name.size() + 1);
    }
    return path;
}

std::string_view Tree::NameOf(NodeId node) const {
    return m_bytes.At(m_nodes[node].name, m_nodes[node].nameLength);
}

std::optional<std::uint64_t> Tree::SizeOf(NodeId node) const {
    const std::uint64_t size = m_nodes[node].size;
    return size != kNoSize ? std::optional(size) : std::nullopt;
}

std::optional<std::int64_t> Tree::ModifiedOf(NodeId node) const {
    const std::int64_t modified = m_nodes[node].modified;
    return modified != kNoTime ? std::optional(modified) : std::nullopt;
}

void Tree::Sort() {
    std::vector<NodeId> scratch;
    for (NodeId node = kScope; node < m_nodes.size(); ++node) {
        if (m_nodes[node].firstChild != kNoNode) {
            SortChildren(node, scratch);
        }
    }
}

void Tree::SortChildren(NodeId folder, std::vector<NodeId>& scratch) {
    scratch.clear();
    for (NodeId each = FirstChild(folder); each != kNoNode; each = NextSibling(each)) {
        scratch.push_back(each);
    }
    // std::string_view compares bytes without sign.
    std::sort(scratch.begin(), scratch.end(),
              [&](NodeId a, NodeId b) { return NameOf(a) < NameOf(b); });
    NodeId next = kNoNode;
    for (auto each = scratch.rbegin(); each != scratch.rend(); ++each) {
        m_nodes[*each].nextSibling = next;
        next = *each;
    }
    m_nodes[folder].firstChild = next;
}

NodeId Tree::NextOfKind(NodeId sibling, bool isFolder) const {
    while (sibling != kNoNode && m_nodes[sibling].isFolder != isFolder) {
        sibling = m_nodes[sibling].nextSibling;
    }
    return sibling;
}

/// The first of a folder that may be closed itself.
NodeId Tree::FirstBelow(NodeId folder, Closed closed) const {
    const bool isClosed = std::binary_search(closed.begin(), closed.end(), folder);
    return isClosed ? folder : FirstInPostOrder(folder, closed);
}

NodeId Tree::FirstInPostOrder(NodeId top, Closed closed) const {
    NodeId node = top;
    for (NodeId inside = top; inside != kNoNode; inside = NextOfKind(FirstChild(node), true)) {
        node = inside;
        if (node != top && std::binary_search(closed.begin(), closed.end(), node)) {
            return node;
        }
    }
    const NodeId file = NextOfKind(FirstChild(node), false);
    return file != kNoNode ? file : node;
}

NodeId Tree::NextInPostOrder(NodeId node, NodeId top, Closed closed) const {
    if (node == top) {
        return kNoNode;
    }
    const bool isFolder = IsFolder(node);
    const NodeId parent = ParentOf(node);
    NodeId next = NextOfKind(NextSibling(node), isFolder);
    if (isFolder) {
        next = next != kNoNode ? FirstBelow(next, closed) : NextOfKind(FirstChild(parent), false);
    }
    return next != kNoNode ? next : parent;
}

void Tree::StoreDigests(NodeId id, const Hashes& first, const Hashes* second) {
    Node& node = m_nodes[id];
    const FormatSet formats = first.Formats();
    if (FormatsOf(id) != formats) {
        const std::size_t bytes = formats.DigestBytes() * (second != nullptr ? 2 : 1);
        node.digests = m_bytes.Take(bytes);
        node.formats = formats.Bits();
    }
    char* place = m_bytes.At(node.digests);
    for (const Hashes* each = &first; each != nullptr; each = each == &first ? second : nullptr) {
        for (const HashFormatFacts& facts : kHashFormats) {
            const std::string_view digest = each->Digest(facts.format);
            place = std::copy(digest.begin(), digest.end(), place);
        }
    }
}

Hashes Tree::LoadDigests(NodeId node, std::size_t start) const {
    Hashes hashes;
    const FormatSet formats = FormatsOf(node);
    const std::string_view digests =
        m_bytes.At(m_nodes[node].digests, start + formats.DigestBytes());
    for (const HashFormatFacts& facts : kHashFormats) {
        if (formats.Has(facts.format)) {
            hashes.Set(facts.format, digests.substr(start, facts.bytes));
            start += facts.bytes;
        }
    }
    return hashes;
}

void Tree::SetHashes(NodeId file, const Hashes& hashes) {
    StoreDigests(file, hashes, nullptr);
}

Hashes Tree::HashesOf(NodeId file) const {
    return LoadDigests(file, 0);
}

void Tree::SetFolderHashes(NodeId folder, const FolderHashes& hashes) {
    const FormatSet both = hashes.content.Formats() & hashes.structure.Formats();
    const Hashes structure = hashes.structure.Only(both);
    StoreDigests(folder, hashes.content.Only(both), &structure);
}

FolderHashes Tree::FolderHashesOf(NodeId folder) const {
    return {LoadDigests(folder, 0), LoadDigests(folder, FormatsOf(folder).DigestBytes())};
}

void Tree::SetAction(NodeId file, HashFormat format, Action action) {
    std::uint16_t& actions = m_nodes[file].actions;
    const unsigned shift = ShiftOf(format);
    actions = static_cast<std::uint16_t>((actions & ~(kActionMask << shift)) |
                                         (static_cast<unsigned>(action) << shift));
}

void Tree::SetActions(NodeId file, Action action) {
    for (const HashFormatFacts& each : kHashFormats) {
        SetAction(file, each.format, FormatsOf(file).Has(each.format) ? action : Action::None);
    }
}

Action Tree::ActionOf(NodeId file, HashFormat format) const {
    return static_cast<Action>((unsigned{m_nodes[file].actions} >> ShiftOf(format)) & kActionMask);
}

void Tree::SetPreviousPath(NodeId node, std::string path) {
    m_previousPaths[node] = std::move(path);
}

const std::string& Tree::PreviousPathOf(NodeId node) const {
    static const std::string kSame;
    const auto found = m_previousPaths.find(node);
    return found != m_previousPaths.end() ? found->second : kSame;
}

std::size_t Tree::BytesUsed() const {
    return m_nodes.size() * sizeof(Node) + m_bytes.BytesUsed() + m_index.size() * sizeof(NodeId);
}

} // namespace nqp2::mhl
