// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// The hashes of folders: of what is in them, and of how it is called.

#include "offload/mhl/tree.h"

#include <algorithm>
#include <array>

namespace nqp2::mhl {

/// Hashes lists of digests, one format at a time.
class FolderHasher {
public:
    void Begin(HashFormat format) {
        m_format = format;
        std::optional<Hasher>& hasher = m_hashers[static_cast<std::size_t>(format)];
        if (!hasher) {
            hasher.emplace(format);
        }
        m_hasher = &*hasher;
        m_contents.clear();
        m_named.clear();
    }
    void Add(std::string_view name, std::string_view content, std::string_view structure) {
        m_contents.push_back(content);
        m_hasher->Add(name);
        m_hasher->Add(structure);
        m_named.append(m_hasher->Value().Digest(m_format));
    }
    void Finish(FolderHashes& hashes) {
        hashes.content.Add(HashOfList());
        m_contents.clear();
        const std::size_t size = FactsOf(m_format).bytes;
        for (std::size_t start = 0; start < m_named.size(); start += size) {
            m_contents.push_back(std::string_view(m_named).substr(start, size));
        }
        hashes.structure.Add(HashOfList());
    }

private:
    /// The texts of digests have the order of their bytes, in every format.
    Hashes HashOfList() {
        std::sort(m_contents.begin(), m_contents.end());
        for (const std::string_view digest : m_contents) {
            m_hasher->Add(digest);
        }
        return m_hasher->Value();
    }

    std::array<std::optional<Hasher>, kHashFormats.size()> m_hashers;
    Hasher* m_hasher = nullptr;
    HashFormat m_format{};
    std::vector<std::string_view> m_contents;
    std::string m_named;
};

std::string_view Tree::DigestOf(NodeId node, HashFormat format, bool isStructure) const {
    const FormatSet formats = FormatsOf(node);
    // Those that stand before it.
    const FormatSet before =
        FormatSet::Of(static_cast<std::uint8_t>((1U << static_cast<unsigned>(format)) - 1U));
    const std::size_t start =
        (isStructure ? formats.DigestBytes() : 0) + (formats & before).DigestBytes();
    const std::size_t size = FactsOf(format).bytes;
    return m_bytes.At(m_nodes[node].digests, start + size).substr(start);
}

void Tree::HashFolder(NodeId folder, FormatSet formats, FolderHasher& hasher) {
    for (NodeId each = FirstChild(folder); each != kNoNode; each = NextSibling(each)) {
        formats = formats & FormatsOf(each);
    }
    FolderHashes hashes;
    for (const HashFormatFacts& facts : kHashFormats) {
        if (!formats.Has(facts.format)) {
            continue;
        }
        hasher.Begin(facts.format);
        for (NodeId each = FirstChild(folder); each != kNoNode; each = NextSibling(each)) {
            hasher.Add(NameOf(each), DigestOf(each, facts.format, false),
                       DigestOf(each, facts.format, IsFolder(each)));
        }
        hasher.Finish(hashes);
    }
    SetFolderHashes(folder, hashes);
}

void Tree::HashFolders(FormatSet formats) {
    FolderHasher hasher;
    for (NodeId node = FirstInPostOrder(kScope); node != kNoNode;
         node = NextInPostOrder(node, kScope)) {
        if (IsFolder(node)) {
            HashFolder(node, formats, hasher);
        }
    }
}

} // namespace nqp2::mhl
