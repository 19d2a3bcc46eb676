// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/clip_choice.h"

#include "nqp2/clip_hint.h"
#include "nqp2/clip_order.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>

namespace nqp2::tool {
namespace {

/// The clip that a file describes which the scan could not read; "" for other files.
std::string UnreadClip(const SkippedFile& file) {
    constexpr SkipReason kOfClips[] = {SkipReason::NotWellFormed, SkipReason::DocumentType,
                                       SkipReason::TooLarge, SkipReason::Unreadable,
                                       SkipReason::IsFolder};
    if (std::find(std::begin(kOfClips), std::end(kOfClips), file.reason) == std::end(kOfClips)) {
        return "";
    }
    const CString name = file.path.Mid(file.path.ReverseFind(L'\\') + 1);
    return BytesFromText(name.Left(name.ReverseFind(L'.')));
}

const _tag_P2Clip* Find(const CardScan& scan, const CString& name) {
    const auto found =
        std::find_if(scan.clips.begin(), scan.clips.end(), [&](const _tag_P2Clip& clip) {
            return clip.ClipName.CompareNoCase(name) == 0;
        });
    return found == scan.clips.end() ? nullptr : &*found;
}

} // namespace

const _tag_P2Clip* NamedClip(const CardScans& scans, const std::string& name) {
    const _tag_P2Clip* found = nullptr;
    CString identifier;
    std::vector<std::string> folders;
    for (const CardScan& scan : scans.cards) {
        const _tag_P2Clip* const clip = Find(scan, TextFromBytes(name));
        // Copies of one clip are as good as each other.
        if (clip != nullptr && (folders.empty() || identifier.IsEmpty() ||
                                clip->GlobalClipID.CompareNoCase(identifier) != 0)) {
            folders.push_back(scan.card.Folder());
            identifier = clip->GlobalClipID;
            found = clip;
        }
    }
    if (found == nullptr && scans.cards.size() > 1) {
        CArray<_tag_P2Clip> all;
        for (const CardScan& scan : scans.cards) {
            all.Append(scan.clips);
        }
        const std::string hint = NearClip(name, all);
        throw Failure(name, "is a clip of none of the cards",
                      hint.empty() ? "`nqp2 clips` lists the clips" : hint);
    }
    if (folders.size() > 1) {
        throw Failure(name, fmt::format("names {} clips", folders.size()),
                      fmt::format("give one of the cards: {}", fmt::join(folders, ", ")));
    }
    return found;
}

ClipChoice::ClipChoice(const CardScans& scans) : m_scans(scans) {
    for (const CardScan& scan : scans.cards) {
        scan.card.RequireContents();
        m_plan.cards.push_back({scan.card, scan.label});
    }
}

void ClipChoice::WantAll() {
    for (const _tag_P2Clip* clip : OrderedClips(m_scans, "name")) {
        Want({static_cast<std::size_t>(&m_scans.CardOf(*clip) - m_scans.cards.data()),
              BytesFromText(clip->ClipName),
              {}});
    }
    for (std::size_t card = 0; card < m_scans.cards.size(); ++card) {
        WantUnread(card);
    }
}

void ClipChoice::WantNamed(const std::string& name) {
    // One that the only card does not have is wanted all the same.
    const _tag_P2Clip* const clip = NamedClip(m_scans, name);
    if (clip == nullptr) {
        Want({0, name, {}});
        return;
    }
    Want({static_cast<std::size_t>(&m_scans.CardOf(*clip) - m_scans.cards.data()),
          BytesFromText(clip->ClipName),
          {}});
}

void ClipChoice::WantWholeTakes() {
    const std::vector<PlannedClip> named = std::exchange(m_plan.clips, {});
    std::set<Key> done;
    for (const PlannedClip& clip : named) {
        for (const PlannedClip& segment : TakeOf(clip)) {
            if (done.insert(KeyOf(segment)).second) {
                m_plan.clips.push_back(segment);
            }
        }
    }
    m_wanted.insert(done.begin(), done.end());
}

ImportPlan ClipChoice::Finish() {
    for (const JoinedTake& take : Takes()) {
        AddPartial(take);
    }
    return std::move(m_plan);
}

void ClipChoice::Want(const PlannedClip& clip) {
    m_plan.clips.push_back(clip);
    m_wanted.insert(KeyOf(clip));
}

void ClipChoice::WantUnread(std::size_t card) {
    std::set<std::string> names;
    for (const SkippedFile& file : m_scans.cards[card].report.skipped) {
        if (const std::string name = UnreadClip(file); !name.empty()) {
            names.insert(name);
        } else if (file.reason == SkipReason::FolderUnreadable) {
            m_plan.unread.push_back(file);
        }
    }
    for (const std::string& name : names) {
        Want({card, name, {}});
    }
}

const CArray<JoinedTake>& ClipChoice::Takes() {
    if (!m_takes) {
        m_takes = m_scans.Takes();
    }
    return *m_takes;
}

/// The segments that the cards have, in shot order, each once: the wanted copy where one is.
std::vector<PlannedClip> ClipChoice::SegmentsOf(const JoinedTake& take) const {
    std::map<std::int64_t, PlannedClip> byPlace;
    for (const TakeSegment& segment : take.segments) {
        const PlannedClip clip = {
            static_cast<std::size_t>(segment.card), BytesFromText(segment.clipName), {}};
        const auto [place, isNew] = byPlace.emplace(segment.place, clip);
        if (!isNew && IsWanted(clip)) {
            place->second = clip;
        }
    }
    std::vector<PlannedClip> segments;
    for (const auto& [place, clip] : byPlace) {
        segments.push_back(clip);
    }
    return segments;
}

bool ClipChoice::IsWanted(const PlannedClip& clip) const {
    return m_wanted.count(KeyOf(clip)) > 0;
}

/// The clip itself where it is of no take.
std::vector<PlannedClip> ClipChoice::TakeOf(const PlannedClip& clip) {
    for (const JoinedTake& take : Takes()) {
        std::vector<PlannedClip> segments = SegmentsOf(take);
        if (std::any_of(segments.begin(), segments.end(), [&](const PlannedClip& segment) {
                return KeyOf(segment) == KeyOf(clip);
            })) {
            return segments;
        }
    }
    return {clip};
}

void ClipChoice::AddPartial(const JoinedTake& take) {
    PartialTake partial;
    for (const PlannedClip& segment : SegmentsOf(take)) {
        (IsWanted(segment) ? partial.taken : partial.left).push_back(segment);
    }
    partial.missing = take.missing;
    if (!partial.taken.empty() && (!partial.left.empty() || !partial.missing.IsEmpty())) {
        m_plan.takes.push_back(std::move(partial));
    }
}

} // namespace nqp2::tool
