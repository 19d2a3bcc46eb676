// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

// One history: its chain, and behind that the manifests which the chain names.

#include "offload/mhl/history_state.h"
#include "offload/mhl/record_taker.h"
#include "platform/folder.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>
#include <utility>

namespace nqp2::mhl {
namespace {

constexpr std::string_view kReadme = "README.txt";

class PartReader {
public:
    PartReader(HistoryState& state, HistoryPart& part, platform::Folder& folder)
        : m_state(state), m_part(part), m_folder(folder) {}

    void Read() {
        const std::set<std::string> manifests = ListManifests();
        ReadChainFile(!manifests.empty());
        std::set<std::string> listed;
        for (const ChainEntry& each : m_part.chain) {
            listed.insert(each.name);
        }
        for (const std::string& each : manifests) {
            if (!listed.contains(each)) {
                m_part.unlisted.push_back(each);
                Fault(each, 0, "the chain does not name this manifest");
            }
        }
        if (m_part.hasChain) {
            for (const ChainEntry& each : m_part.chain) {
                ReadListed(each, manifests);
            }
        } else {
            ReadUnlisted();
        }
        DropOldFolderHashes();
    }

private:
    void Tell(bool isFault, std::string_view name, int line, std::string sentence) {
        m_state.Add(isFault, m_part.PathOf(std::string(kHistoryFolder) + "/" + std::string(name)),
                    line, std::move(sentence));
    }
    void Fault(std::string_view name, int line, std::string sentence) {
        Tell(true, name, line, std::move(sentence));
    }

    std::set<std::string> ListManifests() {
        std::vector<platform::FolderEntry> entries;
        if (const platform::IoStatus status = m_folder.List(entries); !status) {
            Fault("", 0, "cannot be listed: " + status.reason);
        }
        std::set<std::string> manifests;
        for (const platform::FolderEntry& each : entries) {
            const bool isFile = each.kind == platform::EntryKind::File;
            if (isFile && each.name.ends_with(kManifestEnding)) {
                manifests.insert(each.name);
            } else if (each.name != kChainFile && each.name != kReadme &&
                       !each.name.starts_with('.')) {
                Tell(false, each.name, 0, "does not belong to the history");
            }
        }
        return manifests;
    }

    /// A folder in which nothing is but the mark of a copy in the making is no history yet.
    void ReadChainFile(bool hasManifests) {
        std::string bytes;
        const platform::IoStatus status =
            m_folder.Read(std::string(kChainFile), kMaxChainBytes, bytes);
        if (!status) {
            m_part.hasChain = status.error != platform::IoError::NotFound;
            if (!m_part.hasChain && !hasManifests) {
                return;
            }
            Fault(kChainFile, 0,
                  m_part.hasChain ? "cannot be read: " + status.reason
                                  : "the history has no chain, so it is not finished");
            return;
        }
        m_part.hasChain = true;
        m_part.chainHash = HashOf(bytes);
        m_part.chain = ReadChain(bytes, [&](int line, std::string sentence) {
                           Fault(kChainFile, line, std::move(sentence));
                       }).entries;
    }

    static Hashes HashOf(std::string_view bytes) {
        Hasher hasher(HashFormat::C4);
        hasher.Add(bytes);
        return hasher.Value();
    }

    void ReadListed(const ChainEntry& entry, const std::set<std::string>& manifests) {
        if (!manifests.contains(entry.name)) {
            Fault(entry.name, 0, "this manifest, which the chain names, is missing");
            return;
        }
        CheckNumber(entry);
        const Hashes& c4 = ReadManifestFile(entry.name, entry.number);
        if (!entry.c4.OtherThan(c4).IsEmpty()) {
            Fault(entry.name, 0,
                  "this manifest is not the one that was written: the chain has "
                  "another C4 of it");
        }
    }

    void CheckNumber(const ChainEntry& entry) {
        std::uint64_t number = 0;
        const char* const end = entry.name.data() + entry.name.size();
        const auto [stop, error] = std::from_chars(entry.name.data(), end, number);
        if (error != std::errc() || number != entry.number) {
            Tell(false, entry.name, 0,
                 "the name does not begin with the generation's number " +
                     std::to_string(entry.number));
        }
    }

    /// Without a chain, so that as much as possible can be compared.
    void ReadUnlisted() {
        std::uint64_t number = 0;
        for (const std::string& each : m_part.unlisted) {
            ReadManifestFile(each, ++number);
        }
    }

    const Hashes& ReadManifestFile(const std::string& name, std::uint64_t number) {
        Generation& generation = m_part.generations.emplace_back();
        generation.number = number;
        generation.name = name;
        m_part.references.clear();
        const auto tell = [&](bool isFault, int line, std::string sentence) {
            Tell(isFault, name, line, std::move(sentence));
        };
        RecordTaker taker(m_state, m_part, static_cast<std::uint32_t>(m_part.generations.size()),
                          tell);
        ManifestReader reader(taker);
        generation.isWhole = Feed(name, reader, generation.c4) && reader.Finish();
        generation.head = reader.Head();
        taker.TakeHead(generation.head);
        return generation.c4;
    }

    /// Reads the file once, for its hash and for its records. Read to its end also behind a fault.
    bool Feed(const std::string& name, ManifestReader& reader, Hashes& c4) {
        std::unique_ptr<platform::FileReader> file;
        platform::IoStatus status = m_folder.Open(name, file);
        Hasher hasher(HashFormat::C4);
        m_block.resize(kManifestPiece);
        std::size_t count = 1;
        bool isSound = true;
        while (status && count > 0) {
            status = file->Read(m_block.data(), m_block.size(), count);
            const std::string_view bytes(m_block.data(), status ? count : 0);
            hasher.Add(bytes);
            isSound = isSound && reader.Add(bytes);
        }
        c4 = hasher.Value();
        if (!status) {
            Fault(name, 0, "cannot be read: " + status.reason);
        }
        return isSound && status;
    }

    /// Those that the newest generation does not tell may be of another state of the folders.
    void DropOldFolderHashes() {
        const auto newest = static_cast<std::uint32_t>(m_part.generations.size());
        Tree& tree = m_state.expected;
        const NodeId top = tree.Find(m_part.folder);
        m_state.isCurrent.resize(tree.Size());
        const bool hasRoot = newest > 0 && m_part.generations.back().head.root.has_value();
        for (NodeId node = top != kNoNode ? tree.FirstInPostOrder(top) : kNoNode; node != kNoNode;
             node = tree.NextInPostOrder(node, top)) {
            const bool isRecorded =
                node < m_state.recorded.size() && m_state.recorded[node] == newest;
            const bool isOld = node == top ? !hasRoot : !isRecorded;
            m_state.isCurrent[node] = isRecorded && !m_state.hasFailed[node];
            if (tree.IsFolder(node) && isOld) {
                tree.SetFolderHashes(node, {});
            }
        }
    }

    HistoryState& m_state;
    HistoryPart& m_part;
    platform::Folder& m_folder;
    std::string m_block;
};

/// Looks for the folders that have histories; does not enter what no history ever records.
class PartFinder {
public:
    explicit PartFinder(HistoryState& state) : m_state(state) {}

    void Find(platform::Folder& scope) {
        const IgnoreList litter = IgnoreList::Default();
        std::vector<std::string> waiting = {""};
        while (!waiting.empty()) {
            const std::string folder = std::move(waiting.back());
            waiting.pop_back();
            for (const platform::FolderEntry& each : List(scope, folder)) {
                const std::string path = folder.empty() ? each.name : folder + "/" + each.name;
                if (each.name == kHistoryFolder) {
                    AddPart(folder, path, each.kind);
                } else if (each.kind == platform::EntryKind::Folder &&
                           !litter.IsIgnoredItself(each.name, true)) {
                    waiting.push_back(path);
                }
            }
        }
        std::sort(m_state.nested.begin(), m_state.nested.end());
    }

private:
    std::vector<platform::FolderEntry> List(platform::Folder& scope, const std::string& path) {
        std::unique_ptr<platform::Folder> opened;
        platform::IoStatus status;
        if (!path.empty()) {
            status = platform::OpenBelow(scope, path, opened);
        }
        std::vector<platform::FolderEntry> entries;
        if (status) {
            status = (opened != nullptr ? *opened : scope).List(entries);
        }
        if (!status) {
            m_state.Add(true, path, 0, "cannot be looked through for histories: " + status.reason);
        }
        return entries;
    }

    void AddPart(const std::string& folder, const std::string& path, platform::EntryKind kind) {
        if (kind != platform::EntryKind::Folder) {
            m_state.Add(true, path, 0, "is no folder, and so no history");
        } else if (folder.empty()) {
            m_state.parts.front().hasFolder = true;
        } else {
            m_state.nested.push_back(folder);
        }
    }

    HistoryState& m_state;
};

void ReadPart(HistoryState& state, HistoryPart& part, platform::Folder& scope) {
    const std::string path = part.PathOf(kHistoryFolder);
    std::unique_ptr<platform::Folder> folder;
    if (const platform::IoStatus status = platform::OpenBelow(scope, path, folder); !status) {
        state.Add(true, path, 0, "cannot be opened: " + status.reason);
        return;
    }
    PartReader(state, part, *folder).Read();
    for (const Generation& generation : part.generations) {
        for (const std::string& each : generation.head.ignored) {
            if (!part.ignored.Add(each) || !state.ignored.Add(PatternBelow(part.folder, each))) {
                state.Add(true, path + "/" + generation.name, 0, "has too many patterns");
            }
        }
    }
}

const HistoryPart* PartAt(const HistoryState& state, std::string_view folder) {
    const auto found = std::find_if(state.parts.begin(), state.parts.end(),
                                    [&](const HistoryPart& each) { return each.folder == folder; });
    return found != state.parts.end() ? &*found : nullptr;
}

std::string_view FolderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash != std::string_view::npos ? path.substr(0, slash) : std::string_view();
}

/// What the newest manifest of the outer history says of one below, "A/ascmhl/0002_....mhl".
void CheckReference(HistoryState& state, const std::string& file, const Reference& reference) {
    const std::string_view path = reference.path;
    const HistoryPart* const part = PartAt(state, FolderOf(FolderOf(path)));
    const std::string_view name = path.substr(path.rfind('/') + 1);
    const auto tell = [&](const std::string& what) {
        state.Add(true, file, reference.line, "the manifest " + reference.path + " " + what);
    };
    if (part == nullptr) {
        tell("is missing, and all of its history");
        return;
    }
    const auto found = std::find_if(part->generations.begin(), part->generations.end(),
                                    [&](const Generation& each) { return each.name == name; });
    if (found == part->generations.end()) {
        tell("is missing");
    } else if (!reference.c4.OtherThan(found->c4).IsEmpty()) {
        tell("has another C4 than was referred to");
    }
}

/// Whether a history refers to the newest generation of one below it, or to one between that does.
bool Knows(const HistoryState& state, const HistoryPart& outer, const HistoryPart& inner) {
    const std::string newest =
        inner.PathOf(std::string(kHistoryFolder) + "/" + inner.generations.back().name);
    return std::any_of(outer.references.begin(), outer.references.end(),
                       [&](const Reference& each) { return each.path == newest; }) ||
           std::any_of(state.parts.begin(), state.parts.end(), [&](const HistoryPart& middle) {
               return &middle != &outer && &middle != &inner && !middle.generations.empty() &&
                      middle.folder.starts_with(outer.PathOf("")) &&
                      inner.folder.starts_with(middle.PathOf("")) && Knows(state, middle, inner) &&
                      Knows(state, outer, middle);
           });
}

/// A history below may have got generations that the outer one does not know: its folders' hashes
/// are those of an older state.
void ForgetAbove(HistoryState& state, const HistoryPart& outer) {
    for (const HistoryPart& inner : state.parts) {
        if (!inner.folder.starts_with(outer.PathOf("")) || inner.generations.empty() ||
            &inner == &outer) {
            continue;
        }
        if (Knows(state, outer, inner)) {
            continue;
        }
        NodeId node = state.expected.Find(FolderOf(inner.folder));
        for (; node != kNoNode; node = state.expected.ParentOf(node)) {
            state.expected.SetFolderHashes(node, {});
            if (state.expected.PathOf(node) == outer.folder) {
                break;
            }
        }
    }
}

} // namespace

std::string PatternBelow(std::string_view folder, std::string_view pattern) {
    const std::string_view body = pattern.substr(pattern.starts_with('!') ? 1 : 0);
    const std::size_t slash = body.find('/');
    const bool isAnchored = slash != std::string_view::npos && slash + 1 < body.size();
    if (folder.empty() || !isAnchored) {
        return std::string(pattern);
    }
    std::string below(pattern.substr(0, pattern.size() - body.size()));
    below += '/';
    for (const char each : folder) {
        constexpr std::string_view kSpecial = "*?[\\";
        below.append(kSpecial.find(each) != std::string_view::npos ? 1 : 0, '\\').append(1, each);
    }
    return below.append(body.starts_with('/') ? "" : "/").append(body);
}

void ReadHistories(HistoryState& state) {
    state.parts.emplace_back();
    platform::Folder& scope = *state.scope;
    PartFinder(state).Find(scope);
    if (state.parts.front().hasFolder) {
        ReadPart(state, state.parts.front(), scope);
    }
    for (const std::string& folder : state.nested) {
        if (!state.ignored.IsIgnored(folder, true)) {
            HistoryPart& part = state.parts.emplace_back();
            part.folder = folder;
            ReadPart(state, part, scope);
        }
    }
    std::erase_if(state.nested,
                  [&](const std::string& folder) { return PartAt(state, folder) == nullptr; });
    for (const HistoryPart& each : state.parts) {
        for (const Reference& reference : each.references) {
            CheckReference(
                state,
                each.PathOf(std::string(kHistoryFolder) + "/" + each.generations.back().name),
                reference);
        }
        ForgetAbove(state, each);
    }
    state.recorded.resize(state.expected.Size());
    state.isCurrent.resize(state.expected.Size());
    state.isGone.resize(state.expected.Size());
}

} // namespace nqp2::mhl
