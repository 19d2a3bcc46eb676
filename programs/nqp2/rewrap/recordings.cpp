// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/recordings.h"

#include "nqp2/clip_order.h"
#include "NQP2ParserU/TextBytes.h"

#include <algorithm>
#include <map>

namespace nqp2::rewrap {

Recordings::Recordings(const tool::CardScans& scans, bool areApart) : m_scans(scans) {
    if (areApart) {
        return;
    }
    m_takes = scans.Takes();
    for (std::int64_t i = 0; i < m_takes.GetSize(); ++i) {
        for (const TakeSegment& segment : m_takes[i].segments) {
            if (const _tag_P2Clip* const clip = ClipOf(segment)) {
                m_takeOf.emplace(clip, i);
            }
        }
    }
}

Recording Recordings::Of(const _tag_P2Clip& clip) const {
    const auto take = m_takeOf.find(&clip);
    if (take == m_takeOf.end()) {
        return {{&clip}, {}};
    }
    const JoinedTake& joined = m_takes[take->second];
    Recording recording = {{}, joined.missing};
    std::int64_t place = -1;
    for (const TakeSegment& segment : joined.segments) {
        const _tag_P2Clip* const part = ClipOf(segment);
        if (part == nullptr) {
            recording.missing.Add({segment.clipName, L"", L"", segment.place});
        } else if (segment.place != place) {
            recording.clips.push_back(part);
        } else if (part == &clip) { // of copies the one that was asked for
            recording.clips.back() = part;
        }
        place = segment.place;
    }
    return recording;
}

std::vector<Recording> Recordings::All() const {
    RecordingList list(*this);
    for (const _tag_P2Clip* const clip : tool::OrderedClips(m_scans, "name")) {
        list.AddOf(*clip);
    }
    return list.Finish();
}

const _tag_P2Clip* Recordings::ClipOf(const TakeSegment& segment) const {
    const CArray<_tag_P2Clip>& clips = m_scans.cards[static_cast<std::size_t>(segment.card)].clips;
    return segment.clip < 0 ? nullptr : &clips[segment.clip];
}

PlaylistRecordings RecordingsOf(const tag_P2EDL& playlist, const tool::CardScan& card,
                                const Recordings& recordings) {
    std::map<CString, const _tag_P2Clip*> clips;
    for (const _tag_P2Clip& clip : card.clips) {
        clips.emplace(CString(clip.ClipName).MakeUpper(), &clip);
    }
    PlaylistRecordings shown;
    RecordingList list(recordings);
    std::int64_t frames = 0;
    for (const tag_P2EDLClipTrackEvent& event : playlist.Events) {
        const auto clip = clips.find(CString(event.ClipName).MakeUpper());
        if (clip == clips.end()) {
            continue;
        }
        frames += event.Duration;
        list.AddOf(*clip->second);
        if (event.Duration < clip->second->Duration) {
            shown.cut.push_back(BytesFromText(event.ClipName));
        }
    }
    shown.list = list.Finish();
    shown.lostFrames = std::max<std::int64_t>(playlist.Duration - frames, 0);
    return shown;
}

void RecordingList::AddOf(const _tag_P2Clip& clip) {
    if (!Mark(clip)) {
        return;
    }
    m_list.push_back(m_recordings.Of(clip));
    for (const _tag_P2Clip* const part : m_list.back().clips) {
        Mark(*part);
    }
}

/// False when it, or a copy of it, is marked already.
bool RecordingList::Mark(const _tag_P2Clip& clip) {
    const bool isNew = m_done.insert(&clip).second;
    return isNew && (clip.GlobalClipID.IsEmpty() ||
                     m_identifiers.insert(CString(clip.GlobalClipID).MakeUpper()).second);
}

} // namespace nqp2::rewrap
