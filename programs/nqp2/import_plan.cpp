// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/import_plan.h"

#include "nqp2/card_entry.h"
#include "nqp2/card_scan.h"
#include "nqp2/clip_choice.h"
#include "nqp2/clip_sizes.h"
#include "NQP2ParserU/TextBytes.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>

namespace nqp2::tool {
namespace {

/// Whether the clip's metadata name another segment of a recording.
bool IsSegment(const _tag_P2Clip& clip) {
    const bool hasTop = clip.TopClipGuid != GUID() && clip.TopClipGuid != clip.GlobalClipGuid;
    return hasTop || clip.NextClipGuid != GUID() || clip.PreviousClipGuid != GUID() ||
           !clip.NextClipName.IsEmpty() || !clip.PreviousClipName.IsEmpty();
}

bool HasSegment(const Card& card, const std::vector<std::string>& names) {
    ReadyParser parser;
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
        _tag_P2Clip clip;
        return parser->LoadClipInfo(card.Root(), TextFromBytes(name), clip) == 0 && IsSegment(clip);
    });
}

ImportPlan PlanFromScan(Console& console, const ImportWish& wish) {
    ScanOptions options;
    options.cards = wish.cards;
    options.entry = {kP2Cards};
    const CardScans scans = ScanCards(console, options);
    ClipChoice choice(scans);
    if (wish.clips.empty()) {
        choice.WantAll();
    }
    for (const std::string& name : wish.clips) {
        choice.WantNamed(name);
    }
    if (wish.takes == TakeWish::Whole) {
        choice.WantWholeTakes();
    }
    return choice.Finish();
}

/// The clips of a card by their names, none of which is of a take.
ImportPlan PlanNamed(const Card& card, const std::vector<std::string>& names) {
    ImportPlan plan;
    plan.cards.push_back({card, card.Folder()});
    for (const std::string& name : names) {
        plan.clips.push_back({0, name, {}});
    }
    return plan;
}

void Measure(ImportPlan& plan) {
    std::map<std::size_t, ClipSizes> sizes;
    for (PlannedClip& clip : plan.clips) {
        clip.size =
            sizes.try_emplace(clip.card, plan.cards[clip.card].card).first->second.Of(clip.name);
    }
}

ImportPlan MakePlan(Console& console, const ImportWish& wish) {
    if (wish.cards.size() > 1 || wish.clips.empty()) {
        return PlanFromScan(console, wish);
    }
    const Card card = EnterCard(console, wish.cards.front());
    card.RequireContents();
    // Only what may be of a take is looked up among all clips of the card.
    if (!HasSegment(card, wish.clips)) {
        return PlanNamed(card, wish.clips);
    }
    ImportWish entered = wish;
    entered.cards = {card.Argument()};
    return PlanFromScan(console, entered);
}

} // namespace

FileSum ImportPlan::Size() const {
    FileSum sum;
    for (const PlannedClip& clip : clips) {
        sum += clip.size;
    }
    return sum;
}

std::string ImportPlan::LabelOf(const PlannedClip& clip) const {
    return cards.size() == 1 ? clip.name
                             : fmt::format("{} on {}", clip.name, cards[clip.card].label);
}

ImportPlan PlanImport(Console& console, const ImportWish& wish) {
    ImportPlan plan = MakePlan(console, wish);
    Measure(plan);
    return plan;
}

} // namespace nqp2::tool
