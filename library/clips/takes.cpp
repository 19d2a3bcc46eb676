// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/takes.h"

#include "platform/case_fold.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace nqp2::clips {

bool IsRelated(const ClipRelation& clip) {
    return !clip.top.globalClipID.IsEmpty() || !clip.previous.globalClipID.IsEmpty() ||
           !clip.next.globalClipID.IsEmpty();
}

namespace {

using Key = std::wstring;

Key KeyOf(const CString& identifier) {
    return platform::FoldCase(identifier.View());
}

/// The identifier that all segments of a take share: that of the first segment.
const CString& TopOf(const ClipRelation& clip) {
    return clip.top.globalClipID.IsEmpty() ? clip.globalClipID : clip.top.globalClipID;
}

struct Group {
    CString top;
    std::vector<const ClipRelation*> segments;
};

std::vector<Group> GroupByTop(const std::vector<ClipRelation>& clips) {
    std::vector<Group> groups;
    std::unordered_map<Key, std::size_t> places;
    for (const ClipRelation& clip : clips) {
        if (!IsRelated(clip)) {
            continue;
        }
        const auto [place, isNew] = places.emplace(KeyOf(TopOf(clip)), groups.size());
        if (isNew) {
            groups.push_back({TopOf(clip), {}});
        }
        groups[place->second].segments.push_back(&clip);
    }
    return groups;
}

/// Collects the segments that the present ones name and that are not there, each once.
class MissingSegments {
public:
    explicit MissingSegments(const Group& group) {
        for (const ClipRelation* const segment : group.segments) {
            m_known.insert(KeyOf(segment->globalClipID));
        }
    }

    /// `before` is the index of the segment that it comes before.
    void Check(const ClipRelation::Neighbour& neighbour, std::int64_t before) {
        if (!neighbour.globalClipID.IsEmpty() &&
            m_known.insert(KeyOf(neighbour.globalClipID)).second) {
            m_missing.Add({neighbour.clipName, neighbour.serialNo, neighbour.globalClipID, before});
        }
    }

    CArray<MissingSegment> Take() { return std::move(m_missing); }

private:
    std::unordered_set<Key> m_known;
    CArray<MissingSegment> m_missing;
};

Take MakeTake(Group group) {
    std::stable_sort(group.segments.begin(), group.segments.end(),
                     [](const ClipRelation* left, const ClipRelation* right) {
                         return left->offsetInShot < right->offsetInShot;
                     });
    Take take;
    take.topGlobalClipID = group.top;
    MissingSegments missing(group);
    for (const ClipRelation* const segment : group.segments) {
        const std::int64_t place = take.segments.Add(segment->clipName);
        missing.Check(segment->top, 0);
        missing.Check(segment->previous, place);
        missing.Check(segment->next, place + 1);
    }
    take.missing = missing.Take();
    take.complete = take.missing.IsEmpty();
    return take;
}

} // namespace

CArray<Take> FindTakes(const std::vector<ClipRelation>& clips) {
    CArray<Take> takes;
    for (Group& group : GroupByTop(clips)) {
        takes.Add(MakeTake(std::move(group)));
    }
    return takes;
}

} // namespace nqp2::clips
