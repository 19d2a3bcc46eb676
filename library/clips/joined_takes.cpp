// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "NQP2ParserU/JoinedTakes.h"

#include "media/identifier.h"
#include "platform/case_fold.h"
#include "platform/guard.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace nqp2 {
namespace {

using Key = std::wstring;

Key KeyOf(const CString& identifier) {
    return platform::FoldCase(identifier.View());
}

/// A segment with its clip, whose words decide how takes are joined.
struct Segment {
    TakeSegment told;
    const _tag_P2Clip* clip = nullptr; ///< null when it is not among the card's
    Key identifier;                    ///< empty when the clip has none
};

/// The takes of one recording.
struct Group {
    CString top;
    std::vector<Segment> segments;
    std::vector<MissingSegment> missing;
    int takes = 0;
};

/// The place that a segment which is missing has among those that are there: behind the one that
/// goes on in it, or before the one that it goes on in. The first of all is named by each.
std::int64_t PlaceOfMissing(const MissingSegment& missing, const std::vector<Segment>& segments) {
    const GUID guid = media::GuidFromIdentifier(missing.globalClipID);
    for (const Segment& segment : segments) {
        if (guid != GUID() && segment.clip->NextClipGuid == guid) {
            return segment.told.place + 1;
        }
        if (guid != GUID() && segment.clip->PreviousClipGuid == guid) {
            return segment.told.place;
        }
    }
    return 0;
}

/// The clips of a card by their names.
class NamedClips {
public:
    explicit NamedClips(const CArray<_tag_P2Clip>& clips) : m_clips(clips) {
        for (std::int64_t i = 0; i < clips.GetSize(); ++i) {
            m_places.emplace(clips[i].ClipName.View(), i);
        }
    }

    [[nodiscard]] Segment SegmentOf(std::int64_t card, const CString& name) const {
        Segment segment;
        segment.told.card = card;
        segment.told.clipName = name;
        if (const auto place = m_places.find(std::wstring(name.View())); place != m_places.end()) {
            const _tag_P2Clip& clip = m_clips[place->second];
            segment.told.clip = place->second;
            segment.clip = &clip;
            segment.identifier = KeyOf(clip.GlobalClipID);
        }
        return segment;
    }

private:
    const CArray<_tag_P2Clip>& m_clips;
    std::unordered_map<std::wstring, std::int64_t> m_places;
};

class Joiner {
public:
    void AddCard(std::int64_t number, const ScannedCard& card) {
        if (card.report->takes.IsEmpty()) {
            return;
        }
        const NamedClips clips(*card.clips);
        for (const Take& take : card.report->takes) {
            std::vector<Segment> segments;
            for (const CString& name : take.segments) {
                segments.push_back(clips.SegmentOf(number, name));
            }
            AddTake(take, std::move(segments));
        }
    }

    CArray<JoinedTake> Takes() {
        CArray<JoinedTake> takes;
        for (Group& group : m_groups) {
            takes.Add(Joined(group));
        }
        return takes;
    }

private:
    /// Whether other cards can have a part of it: all is told by identifiers.
    static bool IsJoinable(const Take& take, const std::vector<Segment>& segments) {
        return !take.topGlobalClipID.IsEmpty() &&
               std::none_of(segments.begin(), segments.end(),
                            [](const Segment& each) { return each.identifier.empty(); }) &&
               std::none_of(take.missing.begin(), take.missing.end(),
                            [](const auto& each) { return each.globalClipID.IsEmpty(); });
    }

    Group& GroupFor(const Take& take, const std::vector<Segment>& segments) {
        if (IsJoinable(take, segments)) {
            const auto [place, isNew] =
                m_places.emplace(KeyOf(take.topGlobalClipID), m_groups.size());
            if (!isNew) {
                return m_groups[place->second];
            }
        }
        m_groups.emplace_back().top = take.topGlobalClipID;
        return m_groups.back();
    }

    void AddTake(const Take& take, std::vector<Segment> segments) {
        Group& group = GroupFor(take, segments);
        ++group.takes;
        std::move(segments.begin(), segments.end(), std::back_inserter(group.segments));
        std::copy(take.missing.begin(), take.missing.end(), std::back_inserter(group.missing));
    }

    /// In shot order, copies of a segment at one place. Tells which segments are there.
    static std::unordered_set<Key> Order(Group& group) {
        if (group.takes > 1) {
            std::stable_sort(group.segments.begin(), group.segments.end(),
                             [](const Segment& left, const Segment& right) {
                                 return left.clip->OffsetInShot < right.clip->OffsetInShot;
                             });
        }
        std::unordered_set<Key> present;
        std::unordered_map<Key, std::int64_t> places;
        std::int64_t next = 0;
        for (Segment& segment : group.segments) {
            const bool isNew =
                segment.identifier.empty() || places.emplace(segment.identifier, next).second;
            segment.told.place = isNew ? next++ : places[segment.identifier];
            present.insert(segment.identifier);
        }
        return present;
    }

    static JoinedTake Joined(Group& group) {
        std::unordered_set<Key> known = Order(group);
        JoinedTake joined;
        joined.topGlobalClipID = group.top;
        for (MissingSegment& each : group.missing) {
            const bool hasNoName = each.globalClipID.IsEmpty();
            if (!hasNoName && group.takes > 1) {
                each.before = PlaceOfMissing(each, group.segments);
            }
            if (hasNoName || known.insert(KeyOf(each.globalClipID)).second) {
                joined.missing.Add(each);
            }
        }
        for (Segment& segment : group.segments) {
            joined.segments.Add(std::move(segment.told));
        }
        std::stable_sort(
            joined.missing.begin(), joined.missing.end(),
            [](const auto& left, const auto& right) { return left.before < right.before; });
        joined.complete = joined.missing.IsEmpty();
        return joined;
    }

    std::vector<Group> m_groups;
    std::unordered_map<Key, std::size_t> m_places;
};

} // namespace

bool JoinTakes(const CArray<ScannedCard>& cards, CArray<JoinedTake>& takes) noexcept {
    takes.RemoveAll();
    return platform::Guarded(false, [&] {
        Joiner joiner;
        for (std::int64_t i = 0; i < cards.GetSize(); ++i) {
            joiner.AddCard(i, cards[i]);
        }
        takes = joiner.Takes();
        return true;
    });
}

} // namespace nqp2
