// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/catalogue_json.h"

#include "catalogue/clip_facts.h"
#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "console/json_form.h"

#include <fmt/chrono.h>

#include <ctime>
#include <utility>

namespace nqp2::catalogue {
namespace {

using tool::List;
using tool::Record;

void Append(Record& record, Record members) {
    for (tool::NamedValue& each : members) {
        record.push_back(std::move(each));
    }
}

/// A card where another thing is told.
Record PlaceValue(const ClipPlace& place) {
    return {{"card", place.card.id},
            {"label", place.card.label},
            {"serial", place.card.serial},
            {"isMedium", place.card.isMedium != 0},
            {"host", place.card.host},
            {"path", PathOfStored(place.card.place)},
            {"clipName", place.holding.name},
            {"bytes", place.holding.bytes},
            {"isWhole", place.holding.fileGaps == 0},
            {"isIngested", place.holding.isIngested != 0},
            {"seen", DateText(place.card.seen)}};
}

Record GapValue(const KnownGap& known) {
    const bool isFile = known.gap.kind == "file";
    return {{"card", known.card},
            {"kind", known.gap.kind},
            {"name", isFile ? PathOfStored(known.gap.what) : known.gap.what},
            {"problem", known.gap.problem},
            {"globalClipID", known.gap.identity},
            {"serial", known.gap.serial},
            {"knownOn", ListOfEach(known.places, PlaceValue)}};
}

} // namespace

std::string DateText(std::int64_t seconds) {
    return fmt::format("{:%FT%TZ}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

List TextList(const std::vector<std::string>& texts) {
    return ListOfEach(texts, [](const std::string& text) { return text; });
}

Record CardValue(const CardRecord& card) {
    return {{"card", card.id},
            {"label", card.label},
            {"kind", card.kind},
            {"serial", card.serial},
            {"isMedium", card.isMedium != 0},
            {"volume", card.volume},
            {"volumeLabel", card.volumeLabel},
            {"epoch", card.epoch},
            {"host", card.host},
            {"path", PathOfStored(card.place)},
            {"clips", card.clips},
            {"bytes", card.bytes},
            {"contents", card.contents},
            {"added", DateText(card.added)},
            {"changed", DateText(card.changed)},
            {"seen", DateText(card.seen)}};
}

Record OutcomeValue(const StoreOutcome& outcome) {
    Record record = CardValue(outcome.card);
    Append(record, {{"result", std::string(outcome.isUnchanged ? "unchanged"
                                           : outcome.isNew     ? "added"
                                                               : "updated")},
                    {"clipsRead", outcome.clipsRead},
                    {"clipsGone", outcome.clipsGone},
                    {"skippedFiles", outcome.remarks.skippedFiles},
                    {"unreadClips", outcome.remarks.unreadClips}});
    return record;
}

Record ClipValue(const FoundClip& found) {
    const ClipRecord& clip = found.clip;
    return {{"globalClipID", IdentifierOf(clip)},
            {"name", clip.name},
            {"title", clip.title},
            {"start", clip.start},
            {"timecode", clip.timecode},
            {"frames", clip.frames},
            {"seconds", static_cast<double>(clip.milliseconds) / 1000},
            {"rate", clip.rate},
            {"codec", clip.codec},
            {"manufacturer", clip.manufacturer},
            {"camera", clip.camera},
            {"cameraSerial", clip.cameraSerial},
            {"programme", clip.programme},
            {"scene", clip.scene},
            {"take", clip.take},
            {"place", clip.place},
            {"latitude", clip.latitude},
            {"longitude", clip.longitude},
            {"people", TextList(LinesOf(clip.people))},
            {"memos", TextList(LinesOf(clip.memos))},
            {"cards", ListOfEach(found.places, PlaceValue)},
            {"missing", ListOfEach(found.gaps, GapValue)}};
}

Record Document(std::string format, Record members) {
    Record document = {{"format", std::move(format)}, {"version", tool::kJsonVersion}};
    Append(document, std::move(members));
    return document;
}

} // namespace nqp2::catalogue
