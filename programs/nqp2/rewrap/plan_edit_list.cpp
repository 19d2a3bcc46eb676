// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap/plan.h"
#include "nqp2/rewrap/plan_parts.h"
#include "nqp2/timeline/clip_facts.h"
#include "nqp2/timeline/clip_index.h"
#include "nqp2/timeline/plain_text.h"
#include "nqp2/timeline/reel_names.h"

#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace nqp2::rewrap {
namespace {

using tool::Failure;
using ListEvent = tag_P2EDLClipTrackEvent;

constexpr const char* kAnew = "that would have to be encoded anew";

/// The events of one list, each checked for what one file can hold.
class EditListPlan {
public:
    EditListPlan(EssenceReader& reader, const tag_P2EDL& list, const PlanOptions& options)
        : m_reader(reader), m_list(list), m_options(options), m_parts(m_plan, options) {
        m_plan.name = BytesFromText(list.Name);
        m_plan.title = m_plan.name;
        m_plan.reel = timeline::ReelNames().Fresh(m_plan.name);
    }

    Plan Make(const timeline::ClipIndex& clips) {
        const FrameRate* const rate =
            timeline::CameraRate(m_list.EditUnit.Denominator, m_list.EditUnit.Numerator);
        if (rate == nullptr) {
            throw Failure(m_plan.name, "has a rate that no camera has",
                          fmt::format("an edit unit of {}/{}", m_list.EditUnit.Numerator,
                                      m_list.EditUnit.Denominator));
        }
        for (const auto& [number, event] : InOrder()) {
            m_subject = fmt::format("{}: event {}", m_plan.name, number);
            Add(*event, clips, *rate);
        }
        if (m_plan.request.parts.IsEmpty()) {
            throw Failure(m_plan.name, "has no events", "");
        }
        m_parts.Finish(timeline::StartOfList(m_list, *rate, false), false);
        return std::move(m_plan);
    }

private:
    using Numbered = std::pair<std::size_t, const ListEvent*>;

    /// As they follow each other; their numbers are those of the list, from 1.
    [[nodiscard]] std::vector<Numbered> InOrder() const {
        std::vector<Numbered> events;
        for (const ListEvent& event : m_list.Events) {
            events.emplace_back(events.size() + 1, &event);
        }
        std::stable_sort(events.begin(), events.end(),
                         [](const Numbered& left, const Numbered& right) {
                             return left.second->Offset < right.second->Offset;
                         });
        return events;
    }

    [[noreturn]] void Refuse(const std::string& problem, const std::string& reason = "") const {
        throw Failure(m_subject, problem, reason);
    }

    void Add(const ListEvent& event, const timeline::ClipIndex& clips, const FrameRate& rate) {
        CheckPlace(event);
        const _tag_P2Clip* const clip = clips.Find(event);
        if (clip == nullptr) {
            Refuse(fmt::format("{}{} is on none of the cards", timeline::ShortName(event.ClipName),
                               event.P2SerialNo.IsEmpty()
                                   ? ""
                                   : " of card " + timeline::ShortName(event.P2SerialNo)));
        }
        const Essence& essence = EssenceOf(*clip);
        if (!timeline::IsSame(essence.rate, rate)) {
            Refuse(fmt::format("{} has another rate than the list", BytesFromText(clip->ClipName)),
                   kAnew);
        }
        const bool isWhole = CheckCut(event, essence);
        m_plan.bytes += essence.bytes / essence.frames * static_cast<std::uint32_t>(event.Duration);
        CheckLevels(event);
        m_parts.Add({&essence, SoundsOf(event, essence),
                     static_cast<std::uint32_t>(event.SourceOffset),
                     static_cast<std::uint32_t>(event.Duration), isWhole},
                    m_subject);
    }

    void CheckPlace(const ListEvent& event) {
        if (event.Duration <= 0) {
            Refuse(fmt::format("has a length of {} frames", event.Duration));
        }
        if (event.Offset < m_end) {
            Refuse(event.Offset < 0 ? "begins before the list does"
                                    : "begins before the one before it ends",
                   kAnew);
        }
        if (event.Offset > m_end && !m_options.closeGaps) {
            Refuse(fmt::format("begins {} frame{} behind the one before it", event.Offset - m_end,
                               event.Offset - m_end == 1 ? "" : "s"),
                   "--close-gaps puts it right behind");
        }
        m_end = std::int64_t{event.Offset} + event.Duration;
    }

    /// Whether it takes the whole clip.
    [[nodiscard]] bool CheckCut(const ListEvent& event, const Essence& essence) const {
        const std::int64_t end = std::int64_t{event.SourceOffset} + event.Duration;
        const std::string name = BytesFromText(essence.name);
        if (event.SourceOffset < 0 || end > std::int64_t{essence.frames}) {
            Refuse(fmt::format("takes frames {} to {} of {}", event.SourceOffset, end - 1, name),
                   fmt::format("which has {}", essence.frames));
        }
        const bool isWhole = event.SourceOffset == 0 && end == std::int64_t{essence.frames};
        if (!isWhole && !essence.isIntra) {
            Refuse(fmt::format("cuts {}, whose pictures need others", name), kAnew);
        }
        return isWhole;
    }

    void CheckLevels(const ListEvent& event) const {
        const auto* const level =
            std::find_if(std::begin(event.AudioLevels), std::end(event.AudioLevels),
                         [](double each) { return each != 1.0; });
        if (level != std::end(event.AudioLevels)) {
            Refuse(fmt::format("has sound at a level of {:g}", *level), kAnew);
        }
        constexpr std::int32_t kUntold = -1;
        const auto isElsewhere = [](std::int32_t offset) {
            return offset != 0 && offset != kUntold;
        };
        if (isElsewhere(event.AudioInOffset) || isElsewhere(event.AudioOutOffset)) {
            Refuse("has sound that begins or ends elsewhere than its picture", kAnew);
        }
    }

    /// A file for each output, of which the last may have none.
    [[nodiscard]] CStringArray SoundsOf(const ListEvent& event, const Essence& essence) const {
        CStringArray sounds;
        std::int32_t output = 0;
        for (const std::int32_t channel : event.Channels) {
            const bool isThere = channel >= 0 && channel < essence.sounds.GetSize();
            // What is not told comes as the output's own number.
            if ((!isThere && channel != output) || (isThere && sounds.GetSize() != output)) {
                Refuse(fmt::format("wants channel {} of {} on output {}", std::int64_t{channel} + 1,
                                   BytesFromText(essence.name), output + 1),
                       fmt::format("which has {} and no silence", essence.sounds.GetSize()));
            }
            if (isThere) {
                sounds.Add(essence.sounds[channel]);
            }
            ++output;
        }
        if (essence.sounds.IsEmpty() && !essence.soundTexts.empty() && IsRouted(event)) {
            Refuse("wants other channels than are in the picture's file", kAnew);
        }
        return sounds;
    }

    static bool IsRouted(const ListEvent& event) {
        const std::int32_t* const first = std::begin(event.Channels);
        return std::any_of(first, std::end(event.Channels), [&](const std::int32_t& channel) {
            return channel != &channel - first;
        });
    }

    const Essence& EssenceOf(const _tag_P2Clip& clip) {
        const auto known = m_essences.find(&clip);
        if (known != m_essences.end()) {
            return known->second;
        }
        try {
            return m_essences.emplace(&clip, m_reader.Of(clip)).first->second;
        } catch (const Failure& failure) {
            throw Failure(m_subject, failure.what(), "");
        }
    }

    EssenceReader& m_reader;
    const tag_P2EDL& m_list;
    const PlanOptions& m_options;
    Plan m_plan;
    PlanParts m_parts;
    std::map<const _tag_P2Clip*, Essence> m_essences;
    std::string m_subject; ///< the event at work
    std::int64_t m_end = 0;
};

} // namespace

Plan PlanEditList(EssenceReader& reader, const tool::CardScans& scans, const tag_P2EDL& list,
                  const ScanReport& report, const PlanOptions& options) {
    const auto doubt = std::find_if(report.doubts.begin(), report.doubts.end(),
                                    [&](const EventDoubt& each) { return each.list == list.Name; });
    if (doubt != report.doubts.end()) {
        throw Failure(fmt::format("{}: event {}", BytesFromText(list.Name), doubt->event + 1),
                      "is not understood", BytesFromText(doubt->text));
    }
    timeline::ClipIndex clips;
    for (const tool::CardScan& scan : scans.cards) {
        clips.Add(scan.clips);
    }
    return EditListPlan(reader, list, options).Make(clips);
}

} // namespace nqp2::rewrap
