// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_details.h"

#include "catalogue/catalogue_json.h"
#include "catalogue/catalogue_output.h"
#include "catalogue/search.h"

#include <fmt/core.h>

#include <utility>
#include <vector>

namespace nqp2::catalogue {
namespace {

template <class Part, class Columns>
std::vector<Part> PartsOf(Connection& connection, const char* table, const Columns& columns,
                          std::int64_t card, const char* order) {
    std::vector<Part> records;
    connection.Run(
        "SELECT " + NamesOf(columns) + " FROM " + table + " WHERE card_id = $1 ORDER BY " + order,
        {card}, [&](const Row& row) { ReadValues(row, 0, columns, records.emplace_back()); });
    return records;
}

/// Another card with clips of this one.
struct Related {
    std::int64_t card = 0;
    std::string label;
    std::int64_t isMedium = 0;
    std::int64_t clips = 0; ///< that both have
    std::int64_t isSame = 0;
};

std::vector<Related> RelatedTo(Connection& connection, std::int64_t card) {
    std::vector<Related> related;
    connection.Run("SELECT k.id, k.label, k.is_medium, count(DISTINCT mine.clip_id),"
                   " CASE WHEN k.contents = (SELECT contents FROM card WHERE id = $1)"
                   " THEN 1 ELSE 0 END"
                   " FROM holding mine JOIN holding other ON other.clip_id = mine.clip_id"
                   " JOIN card k ON k.id = other.card_id"
                   " WHERE mine.card_id = $1 AND other.card_id <> $1"
                   " GROUP BY k.id, k.label, k.is_medium, k.contents ORDER BY k.id",
                   {card}, [&](const Row& row) {
                       related.push_back({row.Number(0), std::string(row.Text(1)), row.Number(2),
                                          row.Number(3), row.Number(4)});
                   });
    return related;
}

struct Details {
    Details(Connection& connection, std::int64_t card)
        : related(RelatedTo(connection, card)), clips(ClipsOfCard(connection, card)),
          lists(PartsOf<ListRecord>(connection, "list", kListColumns, card, "name")),
          events(PartsOf<EventRecord>(connection, "event", kEventColumns, card, "list, ordinal")),
          ingests(
              PartsOf<IngestRecord>(connection, "ingest", kIngestColumns, card, "clip, in_point")),
          generations(PartsOf<GenerationRecord>(connection, "generation", kGenerationColumns, card,
                                                "number")) {}

    std::vector<Related> related;
    std::vector<FoundClip> clips;
    std::vector<ListRecord> lists;
    std::vector<EventRecord> events;
    std::vector<IngestRecord> ingests;
    std::vector<GenerationRecord> generations;
};

using tool::List;
using tool::Record;

Record RelatedValue(const Related& related) {
    return {{"card", related.card},
            {"label", related.label},
            {"isMedium", related.isMedium != 0},
            {"clips", related.clips},
            {"sameContents", related.isSame != 0}};
}

Record EventValue(const EventRecord& event) {
    return {{"globalClipID", event.identity}, {"clipName", event.clip},
            {"serial", event.serial},         {"position", event.position},
            {"sourceIn", event.sourceIn},     {"sourceOut", event.sourceOut}};
}

List ListValues(const Details& details) {
    return ListOfEach(details.lists, [&](const ListRecord& list) {
        List events;
        for (const EventRecord& event : details.events) {
            if (event.list == list.name) {
                events.emplace_back(EventValue(event));
            }
        }
        return Record{{"name", list.name},
                      {"kind", list.kind},
                      {"rate", list.rate},
                      {"frames", list.frames},
                      {"events", std::move(events)}};
    });
}

Record IngestValue(const IngestRecord& ingest) {
    return {{"clipName", ingest.clip}, {"in", ingest.inPoint}, {"out", ingest.outPoint}};
}

Record GenerationValue(const GenerationRecord& generation) {
    return {{"number", generation.number},
            {"manifest", generation.manifest},
            {"c4", generation.c4},
            {"created", generation.created == 0 ? "" : DateText(generation.created)},
            {"rootFormat", generation.rootFormat},
            {"rootContent", generation.rootContent},
            {"rootStructure", generation.rootStructure}};
}

} // namespace

Record CardDetailsValue(Connection& connection, const CardRecord& card) {
    const Details details(connection, card.id);
    Record record = CardValue(card);
    Record more = {{"related", ListOfEach(details.related, RelatedValue)},
                   {"clipList", ListOfEach(details.clips, ClipValue)},
                   {"editLists", ListValues(details)},
                   {"ingested", ListOfEach(details.ingests, IngestValue)},
                   {"hashLists", ListOfEach(details.generations, GenerationValue)}};
    for (tool::NamedValue& each : more) {
        record.push_back(std::move(each));
    }
    return record;
}

void PrintCardDetails(tool::Console& console, Connection& connection, const CardRecord& card) {
    const Details details(connection, card.id);
    PrintCards(console, {card});
    for (const Related& related : details.related) {
        console.WriteLine(fmt::format("{} has {} of its clips too{}",
                                      NameOf(related.card, related.label), related.clips,
                                      related.isSame != 0 ? ", and no others" : ""));
    }
    for (const ListRecord& list : details.lists) {
        console.WriteLine(fmt::format("{} {}: {} frames of {}",
                                      list.kind == "edl" ? "edit list" : list.kind, list.name,
                                      list.frames, list.rate));
    }
    for (const GenerationRecord& each : details.generations) {
        console.WriteLine(fmt::format("list of hashes {} ({}): {} {}", each.number, each.manifest,
                                      each.rootFormat, each.rootContent));
    }
    PrintClips(console, details.clips);
}

} // namespace nqp2::catalogue
