// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/found_clips.h"

#include "catalogue/clip_facts.h"
#include "catalogue/words.h"
#include "NQP2ParserU/TextBytes.h"

#include <iterator>
#include <span>
#include <utility>

namespace nqp2::catalogue {
namespace {

/// The words are there to be found, not to be shown.
constexpr auto kShown = std::span(kClipColumns).first(std::size(kClipColumns) - 1);

std::vector<FoundClip> RunSelect(Connection& connection, const Select& select) {
    std::vector<FoundClip> found;
    connection.Run(select.Text(), select.Values(), [&](const Row& row) {
        FoundClip& each = found.emplace_back();
        each.id = row.Number(0);
        ReadValues(row, 1, kShown, each.clip);
    });
    return found;
}

std::vector<ClipPlace> PlacesOf(Connection& connection, const char* condition,
                                const Parameter& parameter) {
    static const std::string kSelect = "SELECT k.id, " + NamesOf(kCardColumns, "k.") + ", " +
                                       NamesOf(kHoldingColumns, "h.") +
                                       " FROM holding h JOIN card k ON k.id = h.card_id WHERE ";
    std::vector<ClipPlace> places;
    connection.Run(kSelect + condition + " ORDER BY k.id, h.name", {parameter},
                   [&](const Row& row) {
                       ClipPlace& place = places.emplace_back();
                       place.card.id = row.Number(0);
                       ReadValues(row, 1, kCardColumns, place.card);
                       ReadValues(row, 1 + static_cast<int>(std::size(kCardColumns)),
                                  kHoldingColumns, place.holding);
                   });
    return places;
}

std::vector<GapRecord> GapsOf(Connection& connection, const ClipPlace& place) {
    static const std::string kSelect =
        "SELECT " + NamesOf(kGapColumns) +
        " FROM gap WHERE card_id = $1 AND clip = $2 ORDER BY kind, what";
    std::vector<GapRecord> gaps;
    connection.Run(kSelect, {place.card.id, place.holding.name},
                   [&](const Row& row) { ReadValues(row, 0, kGapColumns, gaps.emplace_back()); });
    return gaps;
}

/// The cards with a missing segment, and of a missing file those on which the clip is whole.
std::vector<ClipPlace> PlacesWith(Connection& connection, const FoundClip& clip,
                                  const GapRecord& gap) {
    if (gap.kind == "segment") {
        return gap.identity.empty()
                   ? std::vector<ClipPlace>()
                   : PlacesOf(connection, "h.clip_id = (SELECT id FROM clip WHERE identity = $1)",
                              gap.identity);
    }
    return PlacesOf(connection, "h.clip_id = $1 AND h.file_gaps = 0", clip.id);
}

void Complete(Connection& connection, FoundClip& clip) {
    clip.places = PlacesOf(connection, "h.clip_id = $1", clip.id);
    for (const ClipPlace& place : clip.places) {
        if (place.holding.fileGaps == 0 && place.holding.segmentGaps == 0) {
            continue;
        }
        for (GapRecord& gap : GapsOf(connection, place)) {
            std::vector<ClipPlace> places = PlacesWith(connection, clip, gap);
            clip.gaps.push_back({place.card.id, std::move(gap), std::move(places)});
        }
    }
}

} // namespace

const std::string& SelectClips() {
    static const std::string kSelect = "SELECT c.id, " + NamesOf(kShown, "c.") + " FROM ";
    return kSelect;
}

std::vector<FoundClip> FindClips(Connection& connection, const Select& select) {
    std::vector<FoundClip> found = RunSelect(connection, select);
    for (FoundClip& clip : found) {
        Complete(connection, clip);
    }
    return found;
}

std::vector<FoundClip> ClipsBehind(Connection& connection, std::int64_t id, std::int64_t limit) {
    Select select(SelectClips() + "clip c");
    select.Where("c.id > " + select.Put(id));
    select.End(" ORDER BY c.id LIMIT " + select.Put(limit));
    return FindClips(connection, select);
}

std::vector<FoundClip> ClipsNamed(Connection& connection, const std::string& name) {
    Select select(SelectClips() + "clip c");
    select.Where("(c.name = " + select.Put(KeptText(name)) +
                 " OR c.identity = " + select.Put(IdentityOf(TextFromBytes(name))) + ")");
    select.End(" ORDER BY c.id LIMIT 1000");
    return FindClips(connection, select);
}

std::vector<FoundClip> ClipsOfCard(Connection& connection, std::int64_t card) {
    Select select(SelectClips() + "holding h JOIN clip c ON c.id = h.clip_id");
    select.Where("h.card_id = " + select.Put(card));
    select.End(" ORDER BY h.name");
    return FindClips(connection, select);
}

} // namespace nqp2::catalogue
