// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/builders.h"
#include "nqp2/timeline/clip_facts.h"
#include "nqp2/timeline/clip_index.h"
#include "nqp2/timeline/media_shelf.h"
#include "nqp2/timeline/placing.h"
#include "nqp2/timeline/plain_text.h"

#include "NQP2ParserU/ClipTimes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace nqp2::timeline {
namespace {

using ListEvent = tag_P2EDLClipTrackEvent;

class EditListBuilder {
public:
    EditListBuilder(const CardView& card, const BuildOptions& options, Remarks& remarks)
        : m_options(options), m_remarks(remarks), m_shelf(card, options, remarks),
          m_placing(remarks) {
        m_clips.Add(*card.clips);
    }

    Timeline Build(const tag_P2EDL& edit, const FrameRate& rate) {
        Timeline timeline;
        timeline.name = BytesFromText(edit.Name);
        timeline.rate = rate;
        timeline.dropFrame = m_options.dropFrame && rate.droppedNumbers != 0;
        timeline.start = m_options.start.empty()
                             ? StartOfList(edit, rate, timeline.dropFrame)
                             : FrameOfText(m_options.start, rate, timeline.dropFrame).value_or(0);
        timeline.showsProxies = m_options.proxies;
        for (const auto& [number, event] : InOrder(edit)) {
            Put(number, *event, rate);
        }
        timeline.events = m_placing.Finish();
        m_shelf.Finish(timeline);
        return timeline;
    }

private:
    using Numbered = std::pair<std::size_t, const ListEvent*>;

    static std::vector<Numbered> InOrder(const tag_P2EDL& edit) {
        std::vector<Numbered> events;
        for (const ListEvent& event : edit.Events) {
            events.emplace_back(events.size() + 1, &event);
        }
        std::stable_sort(events.begin(), events.end(),
                         [](const Numbered& left, const Numbered& right) {
                             return left.second->Offset < right.second->Offset;
                         });
        return events;
    }

    void Put(std::size_t number, const ListEvent& event, const FrameRate& rate) {
        Event placed;
        placed.rate = rate;
        placed.start = event.Offset;
        placed.in = event.SourceOffset;
        placed.length = event.Duration;
        placed.note = BytesFromText(event.Note);
        placed.serialNo = BytesFromText(event.P2SerialNo);
        const std::int64_t end = std::max<std::int64_t>(placed.in + placed.length, 0);
        if (const _tag_P2Clip* const clip = m_clips.Find(event)) {
            placed.media = m_shelf.Of(*clip);
            Check(number, placed.in + placed.length, rate, m_shelf.At(placed.media));
        } else if (event.Duration > 0) {
            placed.media = m_shelf.Missing(event, rate, end);
            m_remarks.AddEvent(
                number,
                fmt::format("{}{} is not on this card: kept as missing", ShortName(event.ClipName),
                            placed.serialNo.empty() ? "" : " of " + ShortName(event.P2SerialNo)));
        }
        AddSound(number, event, placed);
        m_placing.PutAt(number, std::move(placed));
    }

    void Check(std::size_t number, std::int64_t end, const FrameRate& rate, const Media& media) {
        if (!IsSame(rate, media.rate)) {
            m_remarks.AddEvent(number,
                               fmt::format("{} has another rate than the list", media.name));
        }
        if (Rescaled(end, rate, media.rate) > media.length) {
            m_remarks.AddEvent(number, fmt::format("{} ends before the event does", media.name));
        }
    }

    void AddSound(std::size_t number, const ListEvent& event, Event& placed) {
        if (m_options.sound == SoundFrom::Nowhere || event.Duration <= 0) {
            return;
        }
        const auto channels = static_cast<std::int32_t>(m_shelf.At(placed.media).sound.size());
        std::int32_t output = 0;
        for (const std::int32_t channel : event.Channels) {
            const bool isThere = channel >= 0 && channel < channels;
            // What is not told comes as the output's own number.
            if (!isThere && channel != output) {
                m_remarks.AddEvent(number,
                                   fmt::format("{} has no channel {}", ShortName(event.ClipName),
                                               std::int64_t{channel} + 1));
            }
            placed.sound.push_back(
                {isThere ? channel : SoundUse::kSilent, event.AudioLevels[output++]});
        }
        if (event.AudioInOffset > 0 || event.AudioOutOffset > 0) {
            m_remarks.AddEvent(number,
                               "its sound begins or ends elsewhere: taken with the picture");
        }
    }

    const BuildOptions& m_options;
    Remarks& m_remarks;
    MediaShelf m_shelf;
    ClipIndex m_clips;
    Placing m_placing;
};

} // namespace

std::optional<Timeline> FromEditList(const CardView& card, const tag_P2EDL& edit,
                                     const BuildOptions& options, Remarks& remarks) {
    const FrameRate* const rate = CameraRate(edit.EditUnit.Denominator, edit.EditUnit.Numerator);
    if (rate == nullptr) {
        remarks.Add(fmt::format("left out: its edit unit is {}/{}, which no camera has",
                                edit.EditUnit.Numerator, edit.EditUnit.Denominator));
        return std::nullopt;
    }
    return EditListBuilder(card, options, remarks).Build(edit, *rate);
}

std::optional<std::int64_t> FrameOfText(const std::string& text, const FrameRate& rate,
                                        bool dropFrame) {
    const std::int64_t frame = TimecodeFrame(TextFromBytes(text), rate, dropFrame);
    return frame < 0 ? std::nullopt : std::optional(frame);
}

} // namespace nqp2::timeline
