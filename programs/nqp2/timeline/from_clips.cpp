// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/builders.h"
#include "nqp2/timeline/clip_facts.h"
#include "nqp2/timeline/media_shelf.h"
#include "nqp2/timeline/placing.h"
#include "nqp2/timeline/plain_text.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace nqp2::timeline {
namespace {

/// Puts whole clips or the beginnings of clips one after the other, each at its own rate and with
/// all its sound.
class StringOut {
public:
    StringOut(const CardView& card, const BuildOptions& options, Remarks& remarks)
        : m_options(options), m_remarks(remarks), m_shelf(card, options, remarks),
          m_placing(remarks) {}

    void SetRate(const FrameRate& rate) {
        m_timeline.rate = rate;
        m_timeline.dropFrame = m_options.dropFrame && rate.droppedNumbers != 0;
        const std::optional<std::int64_t> start =
            FrameOfText(m_options.start, rate, m_timeline.dropFrame);
        m_timeline.start = start.value_or(0);
    }

    /// So many frames of a clip; its whole length for a negative number.
    void Put(const _tag_P2Clip& clip, std::int64_t length) {
        ++m_number;
        Event event;
        event.media = m_shelf.Of(clip);
        const Media& media = m_shelf.At(event.media);
        event.rate = media.rate;
        event.length = length < 0 ? media.length : length;
        if (event.length > media.length) {
            m_remarks.AddEvent(m_number, fmt::format("{} ends before the event does", media.name));
        }
        for (std::size_t channel = 0; channel < media.sound.size(); ++channel) {
            event.sound.push_back({static_cast<std::int32_t>(channel), 1.0});
        }
        m_placing.PutNext(m_number, std::move(event), m_timeline.rate);
    }

    /// An item of a playlist whose clip is not there. What sound it has is not known.
    void PutMissing(const tag_P2EDLClipTrackEvent& missing) {
        Event event;
        event.rate = RateOf(missing.Clip);
        event.length = missing.Duration;
        ++m_number;
        if (event.length > 0) {
            event.media = m_shelf.Missing(missing, event.rate, event.length);
            m_remarks.AddEvent(m_number, fmt::format("{} is not on this card: kept as missing",
                                                     ShortName(missing.ClipName)));
        }
        m_placing.PutNext(m_number, std::move(event), m_timeline.rate);
    }

    Timeline Finish(std::string name) {
        m_timeline.name = std::move(name);
        m_timeline.showsProxies = m_options.proxies;
        m_timeline.events = m_placing.Finish();
        m_shelf.Finish(m_timeline);
        return std::move(m_timeline);
    }

private:
    const BuildOptions& m_options;
    Remarks& m_remarks;
    MediaShelf m_shelf;
    Placing m_placing;
    Timeline m_timeline;
    std::size_t m_number = 0;
};

using ClipsByName = std::map<CString, const _tag_P2Clip*>;

ClipsByName ByName(const CArray<_tag_P2Clip>& clips) {
    ClipsByName byName;
    for (const _tag_P2Clip& clip : clips) {
        byName.emplace(CString(clip.ClipName).MakeUpper(), &clip);
    }
    return byName;
}

/// By their names; where a recording's first clip comes the others follow it.
std::vector<const _tag_P2Clip*> InOrder(const ClipsByName& clips, const ScanReport& report) {
    std::map<CString, const Take*> takes;
    for (const Take& take : report.takes) {
        for (const CString& name : take.segments) {
            takes.emplace(CString(name).MakeUpper(), &take);
        }
    }
    std::vector<const _tag_P2Clip*> order;
    std::set<const _tag_P2Clip*> done;
    const auto add = [&](const CString& name) {
        const auto clip = clips.find(name);
        if (clip != clips.end() && done.insert(clip->second).second) {
            order.push_back(clip->second);
        }
    };
    for (const auto& [name, clip] : clips) {
        if (const auto take = takes.find(name); take != takes.end()) {
            for (const CString& segment : take->second->segments) {
                add(CString(segment).MakeUpper());
            }
        }
        add(name);
    }
    return order;
}

/// That of most clips.
FrameRate UsualRate(const std::vector<const _tag_P2Clip*>& clips) {
    std::map<std::pair<std::int32_t, std::int32_t>, std::size_t> counts;
    FrameRate usual;
    std::size_t most = 0;
    for (const _tag_P2Clip* clip : clips) {
        const FrameRate rate = RateOf(*clip);
        const std::size_t count = ++counts[{rate.frames, rate.seconds}];
        if (count > most) {
            most = count;
            usual = rate;
        }
    }
    return usual;
}

void TellMissingSegments(const ScanReport& report, Remarks& remarks) {
    for (const Take& take : report.takes) {
        for (const MissingSegment& segment : take.missing) {
            remarks.Add(fmt::format(
                "{}: a part of its recording is not on this card{}{}",
                take.segments.IsEmpty() ? "" : BytesFromText(take.segments[0]),
                segment.clipName.IsEmpty() ? "" : ": " + ShortName(segment.clipName),
                segment.serialNo.IsEmpty() ? "" : " on " + ShortName(segment.serialNo)));
        }
    }
}

} // namespace

Timeline FromPlaylist(const CardView& card, const tag_P2EDL& playlist, const BuildOptions& options,
                      Remarks& remarks) {
    StringOut out(card, options, remarks);
    const FrameRate* const told =
        playlist.FrameRate.IsEmpty()
            ? nullptr
            : CameraRate(playlist.EditUnit.Denominator, playlist.EditUnit.Numerator);
    const bool isEmpty = playlist.Events.IsEmpty();
    out.SetRate(told != nullptr ? *told : isEmpty ? FrameRate() : RateOf(playlist.Events[0].Clip));
    const ClipsByName clips = ByName(*card.clips);
    for (const tag_P2EDLClipTrackEvent& event : playlist.Events) {
        const auto scanned = clips.find(CString(event.ClipName).MakeUpper());
        if (scanned == clips.end() && event.Clip.ClipName.IsEmpty()) {
            out.PutMissing(event);
        } else {
            out.Put(scanned == clips.end() ? event.Clip : *scanned->second,
                    std::max(event.Duration, 0));
        }
    }
    return out.Finish(BytesFromText(playlist.Name));
}

Timeline FromClips(const CardView& card, const BuildOptions& options, Remarks& remarks) {
    const std::vector<const _tag_P2Clip*> clips = InOrder(ByName(*card.clips), *card.report);
    StringOut out(card, options, remarks);
    out.SetRate(UsualRate(clips));
    TellMissingSegments(*card.report, remarks);
    for (const _tag_P2Clip* clip : clips) {
        out.Put(*clip, -1);
    }
    Timeline timeline = out.Finish(card.name);
    timeline.isBin = true;
    return timeline;
}

} // namespace nqp2::timeline
