// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/comparison.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>

namespace nqp2::mhl {
namespace {

class Comparer {
public:
    Comparer(const History& history, Tree& present)
        : m_history(history), m_expected(history.Expected()), m_present(present),
          m_counterpart(present.Size(), kNoNode), m_isThere(m_expected.Size()) {}

    Comparison Compare() {
        m_counterpart[kScope] = kScope;
        m_isThere[kScope] = true;
        m_recordsFolders = RecordsFolders();
        CompareFolder(kScope);
        // A folder is added before what is in it.
        for (NodeId node = kScope + 1; node < m_present.Size(); ++node) {
            FindCounterpart(node);
            if (m_present.IsFolder(node)) {
                CompareFolder(node);
            } else {
                CompareFile(node);
            }
        }
        CollectMissing();
        FindRenamed();
        FindRenamedEmptyFolders();
        const auto isFound = [&](NodeId node) { return static_cast<bool>(m_isThere[node]); };
        std::erase_if(m_result.missing, isFound);
        std::erase_if(m_result.missingFolders, isFound);
        for (std::vector<NodeId>* const nodes : {&m_result.added, &m_result.addedFolders}) {
            std::erase_if(*nodes,
                          [&](NodeId node) { return !m_present.PreviousPathOf(node).empty(); });
        }
        return std::move(m_result);
    }

private:
    void FindCounterpart(NodeId node) {
        const NodeId parent = m_counterpart[m_present.ParentOf(node)];
        const NodeId found =
            parent != kNoNode ? m_expected.Find(parent, m_present.NameOf(node)) : kNoNode;
        if (found != kNoNode && m_expected.IsFolder(found) == m_present.IsFolder(node)) {
            m_counterpart[node] = found;
            m_isThere[found] = true;
        }
    }

    /// Other programs may leave folders out; then none is new.
    [[nodiscard]] bool RecordsFolders() const {
        bool records = !m_expected.FolderHashesOf(kScope).structure.Formats().IsEmpty();
        for (NodeId node = kScope + 1; !records && node < m_expected.Size(); ++node) {
            records = m_expected.IsFolder(node) && m_history.IsExpected(node);
        }
        return records;
    }

    /// A folder in which something is recorded is known, be it recorded or not.
    [[nodiscard]] bool IsKnownFolder(NodeId before) const {
        return before != kNoNode &&
               (m_history.IsExpected(before) || m_expected.FirstChild(before) != kNoNode);
    }

    void CompareFolder(NodeId node) {
        const NodeId before = m_counterpart[node];
        if (m_recordsFolders && node != kScope && !IsKnownFolder(before)) {
            m_result.addedFolders.push_back(node);
        }
        if (before == kNoNode) {
            return;
        }
        const FolderHashes now = m_present.FolderHashesOf(node);
        const FolderHashes then = m_expected.FolderHashesOf(before);
        if (!(now.content.OtherThan(then.content) | now.structure.OtherThan(then.structure))
                 .IsEmpty()) {
            m_result.changedFolders.push_back(node);
        }
    }

    void CompareFile(NodeId node) {
        const NodeId before = m_counterpart[node];
        if (before == kNoNode || !m_history.IsExpected(before)) {
            m_result.added.push_back(node);
            m_present.SetActions(node, Action::Original);
            return;
        }
        const Hashes now = m_present.HashesOf(node);
        const Hashes then = m_expected.HashesOf(before);
        const FormatSet same = now.SameAs(then);
        const FormatSet other = now.OtherThan(then);
        const auto size = m_expected.SizeOf(before);
        const bool hasOtherSize = size && m_present.SizeOf(node).value_or(*size) != *size;
        if (!other.IsEmpty() || hasOtherSize) {
            m_result.changed.push_back(node);
        } else if (same.IsEmpty()) {
            m_result.unproven.push_back(node);
        } else {
            ++m_result.verified;
        }
        SetActions(node, now, same, other, then.Formats());
    }

    /// A hash of a format that was not recorded is as good as those that were checked with it.
    void SetActions(NodeId node, const Hashes& now, FormatSet same, FormatSet other,
                    FormatSet recorded) {
        const Action forNew = !other.IsEmpty()     ? Action::Failed
                              : !same.IsEmpty()    ? Action::Verified
                              : recorded.IsEmpty() ? Action::Original
                                                   : Action::Failed;
        for (const HashFormatFacts& each : kHashFormats) {
            if (now.Has(each.format)) {
                m_present.SetAction(node, each.format,
                                    same.Has(each.format)    ? Action::Verified
                                    : other.Has(each.format) ? Action::Failed
                                                             : forNew);
            }
        }
    }

    void CollectMissing() {
        for (NodeId node = kScope + 1; node < m_expected.Size(); ++node) {
            if (m_isThere[node] || !m_history.IsExpected(node) ||
                m_history.Ignored().IsIgnored(m_expected.PathOf(node), m_expected.IsFolder(node))) {
                continue;
            }
            auto& list = m_expected.IsFolder(node) ? m_result.missingFolders : m_result.missing;
            list.push_back(node);
        }
    }

    static std::string KeyOf(const Hashes& hashes, HashFormat format) {
        return std::string(FactsOf(format).name).append(hashes.Digest(format));
    }

    /// A new file with the content of a missing one is that file, if only one can be meant.
    void FindRenamed() {
        if (m_result.added.empty() || m_result.missing.empty()) {
            return;
        }
        std::unordered_multimap<std::string, NodeId> byHash;
        for (const NodeId node : m_result.missing) {
            const Hashes hashes = m_expected.HashesOf(node);
            for (const HashFormatFacts& each : kHashFormats) {
                if (hashes.Has(each.format)) {
                    byHash.emplace(KeyOf(hashes, each.format), node);
                }
            }
        }
        for (const NodeId now : m_result.added) {
            const NodeId before = Former(now, byHash);
            if (before != kNoNode) {
                m_isThere[before] = true;
                m_result.renamed.push_back({now, before});
                m_present.SetPreviousPath(now, m_expected.PathOf(before));
            }
        }
        FindRenamedFolders();
    }

    /// The missing file that a new one was; one of the same name before others.
    [[nodiscard]] NodeId Former(NodeId now,
                                const std::unordered_multimap<std::string, NodeId>& byHash) const {
        const Hashes hashes = m_present.HashesOf(now);
        NodeId found = kNoNode;
        // Empty files are all alike.
        if (m_present.SizeOf(now) == 0) {
            return found;
        }
        for (const HashFormatFacts& each : kHashFormats) {
            if (!hashes.Has(each.format)) {
                continue;
            }
            const auto [first, last] = byHash.equal_range(KeyOf(hashes, each.format));
            std::size_t tries = 0;
            for (auto row = first; row != last && tries < kMostTries; ++row, ++tries) {
                const NodeId before = row->second;
                if (m_isThere[before] || !IsSameFile(now, hashes, before)) {
                    continue;
                }
                if (m_expected.NameOf(before) == m_present.NameOf(now)) {
                    return before;
                }
                found = found == kNoNode ? before : found;
            }
        }
        return found;
    }

    [[nodiscard]] bool IsSameFile(NodeId now, const Hashes& hashes, NodeId before) const {
        const auto size = m_expected.SizeOf(before);
        return hashes.OtherThan(m_expected.HashesOf(before)).IsEmpty() &&
               (!size || !m_present.SizeOf(now) || m_present.SizeOf(now) == size);
    }

    /// Upward from each file that kept its name: as far as new folders stand for missing ones.
    void FindRenamedFolders() {
        for (const Renamed& file : m_result.renamed) {
            NodeId now = file.now;
            NodeId before = file.before;
            while (m_present.NameOf(now) == m_expected.NameOf(before)) {
                now = m_present.ParentOf(now);
                before = m_expected.ParentOf(before);
                if (now == kScope || before == kScope || m_isThere[before] ||
                    m_counterpart[now] != kNoNode || !m_present.PreviousPathOf(now).empty() ||
                    !m_history.IsExpected(before)) {
                    break;
                }
                m_isThere[before] = true;
                m_present.SetPreviousPath(now, m_expected.PathOf(before));
            }
        }
    }

    /// A new empty folder is a missing empty one, if only one can be meant: of its name, or else in
    /// its place.
    void FindRenamedEmptyFolders() {
        const auto isTaken = [&](NodeId before) {
            return m_isThere[before] || m_expected.FirstChild(before) != kNoNode;
        };
        const auto isKnown = [&](NodeId now) {
            return m_present.FirstChild(now) != kNoNode || !m_present.PreviousPathOf(now).empty();
        };
        const auto nameBefore = [&](NodeId before) {
            return std::string(m_expected.NameOf(before));
        };
        const auto nameNow = [&](NodeId now) { return std::string(m_present.NameOf(now)); };
        const auto placeBefore = [&](NodeId before) {
            return std::to_string(m_expected.ParentOf(before));
        };
        const auto placeNow = [&](NodeId now) {
            return std::to_string(m_counterpart[m_present.ParentOf(now)]);
        };
        PairAlone(isTaken, isKnown, nameBefore, nameNow);
        PairAlone(isTaken, isKnown, placeBefore, placeNow);
    }

    /// Pairs missing folders with new ones where one of each kind is alone with its key.
    template <class IsTaken, class IsKnown, class KeyBefore, class KeyNow>
    void PairAlone(const IsTaken& isTaken, const IsKnown& isKnown, const KeyBefore& keyBefore,
                   const KeyNow& keyNow) {
        constexpr NodeId kSeveral = kNoNode;
        const auto note = [](auto& map, const std::string& key, NodeId node) {
            const auto [place, isNew] = map.emplace(key, node);
            place->second = isNew ? node : kSeveral;
        };
        std::unordered_map<std::string, NodeId> missing;
        std::unordered_map<std::string, NodeId> fresh;
        for (const NodeId before : m_result.missingFolders) {
            if (!isTaken(before)) {
                note(missing, keyBefore(before), before);
            }
        }
        for (const NodeId now : m_result.addedFolders) {
            if (!missing.empty() && !isKnown(now)) {
                note(fresh, keyNow(now), now);
            }
        }
        for (const auto& [key, now] : fresh) {
            const auto before = missing.find(key);
            if (now != kSeveral && before != missing.end() && before->second != kSeveral) {
                m_isThere[before->second] = true;
                m_result.renamed.push_back({now, before->second});
                m_present.SetPreviousPath(now, m_expected.PathOf(before->second));
            }
        }
    }

    static constexpr std::size_t kMostTries = 1000;

    const History& m_history;
    const Tree& m_expected;
    Tree& m_present;
    std::vector<NodeId> m_counterpart; ///< in what is expected, by node of what is present
    std::vector<bool> m_isThere;       ///< by node of what is expected
    bool m_recordsFolders = false;
    Comparison m_result;
};

} // namespace

bool Comparison::IsClean() const {
    return changed.empty() && unproven.empty() && added.empty() && addedFolders.empty() &&
           renamed.empty() && missing.empty() && missingFolders.empty() && changedFolders.empty();
}

FormatSet FormatsToCheck(const History& history, std::string_view path) {
    const NodeId node = history.Expected().Find(path);
    return node != kNoNode && history.IsExpected(node) ? history.Expected().FormatsOf(node)
                                                       : FormatSet();
}

Comparison Compare(const History& history, Tree& present) {
    return Comparer(history, present).Compare();
}

} // namespace nqp2::mhl
