// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/rewrap_plans.h"

#include "nqp2/clip_choice.h"
#include "nqp2/clip_hint.h"
#include "nqp2/scan_report_output.h"
#include "nqp2/timeline_lists.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace nqp2::tool {
namespace {

using rewrap::Plan;

/// A list, with all those of its card.
struct FoundList {
    const CardScan* card = nullptr;
    std::unique_ptr<TimelineLists> lists;
    const tag_P2EDL* list = nullptr;
};

/// Throws the failure to report for a name that none or several of the cards of a kind have.
FoundList FindList(Console& console, const CardScans& scans, CardKind kind,
                   const std::string& name) {
    const char* const what = kind == CardKind::P2 ? "edit list" : "playlist";
    FoundList found;
    for (const CardScan& scan : scans.cards) {
        if (scan.kind != kind) {
            continue;
        }
        auto lists = std::make_unique<TimelineLists>(scan);
        const tag_P2EDL* const list = lists->Find(name);
        if (list == nullptr) {
            TellLosses(console, lists->Report(), false);
        } else if (found.list != nullptr) {
            throw Failure(name, fmt::format("is the {} of several cards", what),
                          fmt::format("give {} or {}", found.card->label, scan.label));
        } else {
            found = {&scan, std::move(lists), list};
        }
    }
    if (found.list == nullptr) {
        throw Failure(
            name, fmt::format("is no {} of the card{}", what, scans.cards.size() == 1 ? "" : "s"),
            "");
    }
    return found;
}

/// Finds what is to be made.
class Planner {
public:
    Planner(Console& console, const RewrapWish& wish, const CardScans& scans)
        : m_console(console), m_wish(wish), m_scans(scans), m_reader(scans) {}

    std::vector<Plan> Make() {
        if (!m_wish.editList.empty()) {
            const FoundList found = FindList(m_console, m_scans, CardKind::P2, m_wish.editList);
            return {
                PlanEditList(m_reader, m_scans, *found.list, found.lists->Report(), m_wish.plan)};
        }
        const rewrap::Recordings recordings(m_scans, m_wish.noTake);
        if (!m_wish.clip.empty()) {
            return {PlanRecording(m_reader, recordings.Of(NamedClipOfAll()), m_wish.plan)};
        }
        return m_wish.all ? OfAll(recordings) : OfPlaylist(recordings);
    }

    std::vector<Loss> TakeLosses() { return std::move(m_losses); }

private:
    const _tag_P2Clip& NamedClipOfAll() const {
        const _tag_P2Clip* const clip = NamedClip(m_scans, m_wish.clip);
        if (clip == nullptr) {
            const std::string hint = NearClipOfAll();
            throw Failure(m_wish.clip, "is no clip of " + m_scans.cards.front().card.Folder(),
                          hint.empty() ? "`nqp2 clips --report` lists the clips" : hint);
        }
        return *clip;
    }

    [[nodiscard]] std::string NearClipOfAll() const {
        CArray<_tag_P2Clip> clips;
        for (const CardScan& scan : m_scans.cards) {
            clips.Append(scan.clips);
        }
        return NearClip(m_wish.clip, clips);
    }

    std::vector<Plan> OfAll(const rewrap::Recordings& recordings) {
        for (const CardScan& scan : m_scans.cards) {
            AddUnread(scan);
        }
        return PlanRecordings(m_reader, recordings.All(), m_wish.plan);
    }

    /// Files of which nobody knows what clips they tell of.
    void AddUnread(const CardScan& scan) {
        constexpr SkipReason kNoLoss[] = {SkipReason::Companion, SkipReason::NoClipContent,
                                          SkipReason::UnsafeName};
        for (const SkippedFile& file : scan.report.skipped) {
            if (std::find(std::begin(kNoLoss), std::end(kNoLoss), file.reason) ==
                std::end(kNoLoss)) {
                m_losses.push_back({PositionText(file), ReasonText(file)});
            }
        }
    }

    std::vector<Plan> OfPlaylist(const rewrap::Recordings& recordings) {
        const FoundList found = FindList(m_console, m_scans, CardKind::Avchd, m_wish.playlist);
        const rewrap::PlaylistRecordings shown = RecordingsOf(*found.list, *found.card, recordings);
        const std::string name = BytesFromText(found.list->Name);
        if (shown.lostFrames > 0) {
            m_losses.push_back(
                {name, fmt::format("{} of its frames are of clips that are not on the card",
                                   shown.lostFrames)});
        }
        if (!shown.cut.empty()) {
            m_console.Message(fmt::format("nqp2: {}: shows only a part of {}: the files have all "
                                          "of each recording",
                                          name, fmt::join(shown.cut, ", ")));
        }
        return PlanRecordings(m_reader, shown.list, m_wish.plan);
    }

    Console& m_console;
    const RewrapWish& m_wish;
    const CardScans& m_scans;
    rewrap::EssenceReader m_reader;
    std::vector<Loss> m_losses;
};

} // namespace

RewrapPlans PlanRewrap(Console& console, const CardScans& scans, const RewrapWish& wish) {
    Planner planner(console, wish, scans);
    RewrapPlans made;
    made.plans = planner.Make();
    made.losses = planner.TakeLosses();
    return made;
}

} // namespace nqp2::tool
