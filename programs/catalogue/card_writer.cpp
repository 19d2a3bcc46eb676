// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_writer.h"

#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "platform/host_name.h"

#include <chrono>
#include <functional>
#include <iterator>

namespace nqp2::catalogue {
namespace {

/// What belongs to a card beside its clips.
constexpr const char* kPartTables[] = {"gap", "list", "event", "ingest", "generation"};

std::string DeleteFrom(const std::string& table) {
    return "DELETE FROM " + table + " WHERE card_id = $1";
}

void RemoveLoose(Connection& connection, const std::set<std::int64_t>& clips) {
    for (const std::int64_t clip : clips) {
        connection.Run("DELETE FROM clip WHERE id = $1 AND NOT EXISTS"
                       " (SELECT 1 FROM holding WHERE clip_id = $1)",
                       {clip});
    }
}

/// Columns of a holding that may change without its files being read.
bool IsSameButFor(const HoldingRecord& one, const HoldingRecord& other) {
    return one.segmentGaps == other.segmentGaps && one.isIngested == other.isIngested;
}

} // namespace

CardWriter::CardWriter(Connection& connection, CardContents& contents,
                       const std::vector<HoldingRecord>& known)
    : m_connection(connection), m_contents(contents), m_isNew(contents.card.id == 0) {
    for (const HoldingRecord& each : known) {
        m_known.emplace(each.name, each);
    }
}

void CardWriter::Write() {
    WriteCard();
    WriteClips();
    WriteHoldings();
    RemoveGone();
    if (!m_isNew) {
        RemoveGaps();
    }
    WriteParts("gap", kGapColumns, m_contents.gaps);
    Replace("list", kListColumns, m_contents.lists);
    Replace("event", kEventColumns, m_contents.events);
    Replace("ingest", kIngestColumns, m_contents.ingests);
    Replace("generation", kGenerationColumns, m_contents.generations);
    RemoveLoose(m_connection, m_loosened);
}

void CardWriter::WriteCard() {
    static const Insertion kInsert = InsertionInto("card", "", kCardColumns, " RETURNING id");
    static const std::string kUpdate = UpdateById("card", kCardColumns);
    CardRecord& card = m_contents.card;
    if (m_isNew) {
        Parameters parameters;
        AddValues(parameters, kCardColumns, card);
        m_connection.Insert(kInsert, {parameters},
                            [&](const Row& row) { card.id = row.Number(0); });
    } else {
        Parameters parameters = {card.id};
        AddValues(parameters, kCardColumns, card);
        m_connection.Run(kUpdate, parameters);
    }
}

void CardWriter::WriteClips() {
    static const Insertion kInsert = InsertionInto(
        "clip", "", kClipColumns, OrUpdate("identity", kClipColumns) + " RETURNING id, identity");
    // In one order for all writers, so that no two wait for each other; of several with one
    // identifier the last.
    std::map<std::string, ClipRecord*> clips;
    for (CardClip& each : m_contents.read) {
        clips[each.clip.identity] = &each.clip;
    }
    std::vector<Parameters> rows;
    for (const auto& [identity, clip] : clips) {
        clip->words = m_connection.Words().keptWords(clip->words);
        AddValues(rows.emplace_back(), kClipColumns, *clip);
    }
    std::map<std::string, std::int64_t, std::less<>> numbers;
    m_connection.Insert(kInsert, rows,
                        [&](const Row& row) { numbers.emplace(row.Text(1), row.Number(0)); });
    for (CardClip& each : m_contents.read) {
        each.holding.clip = numbers.at(each.clip.identity);
    }
}

void CardWriter::WriteHoldings() {
    static const Insertion kInsert = InsertionInto("holding", "card_id", kHoldingColumns,
                                                   OrUpdate("card_id, name", kHoldingColumns));
    std::map<std::string, const HoldingRecord*> holdings;
    for (const CardClip& each : m_contents.read) {
        holdings[each.holding.name] = &each.holding;
    }
    for (const HoldingRecord& each : m_contents.unchanged) {
        const auto known = m_known.find(each.name);
        if (known != m_known.end() && IsSameButFor(known->second, each)) {
            m_known.erase(known);
        } else {
            holdings[each.name] = &each;
        }
    }
    std::vector<Parameters> rows;
    for (const auto& [name, holding] : holdings) {
        AddValues(rows.emplace_back(Parameters{Parameter(m_contents.card.id)}), kHoldingColumns,
                  *holding);
        if (const auto known = m_known.find(name); known != m_known.end()) {
            if (known->second.clip != holding->clip) {
                m_loosened.insert(known->second.clip);
            }
            m_known.erase(known);
        }
    }
    m_connection.Insert(kInsert, rows);
}

void CardWriter::RemoveGone() {
    for (const auto& [name, holding] : m_known) {
        m_connection.Run("DELETE FROM holding WHERE card_id = $1 AND name = $2",
                         {m_contents.card.id, name});
        m_connection.Run("DELETE FROM gap WHERE card_id = $1 AND clip = $2",
                         {m_contents.card.id, name});
        m_loosened.insert(holding.clip);
        ++m_gone;
    }
}

/// Those of files stay for the clips that were not read.
void CardWriter::RemoveGaps() {
    const std::int64_t card = m_contents.card.id;
    if (m_contents.unchanged.empty()) {
        m_connection.Run(DeleteFrom("gap"), {card});
        return;
    }
    m_connection.Run("DELETE FROM gap WHERE card_id = $1 AND kind = 'segment'", {card});
    for (const CardClip& each : m_contents.read) {
        m_connection.Run("DELETE FROM gap WHERE card_id = $1 AND clip = $2",
                         {card, each.holding.name});
    }
}

template <class Columns, class Records>
void CardWriter::WriteParts(const char* table, const Columns& columns, const Records& records) {
    std::vector<Parameters> rows;
    for (const auto& record : records) {
        AddValues(rows.emplace_back(Parameters{Parameter(m_contents.card.id)}), columns, record);
    }
    m_connection.Insert(InsertionInto(table, "card_id", columns), rows);
}

template <class Columns, class Records>
void CardWriter::Replace(const char* table, const Columns& columns, const Records& records) {
    if (!m_isNew) {
        m_connection.Run(DeleteFrom(table), {m_contents.card.id});
    }
    WriteParts(table, columns, records);
}

void TouchCard(Connection& connection, CardRecord& card, const std::string& path) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    card.host = KeptText(platform::HostName());
    card.place = StoredPath(path);
    card.seen = std::chrono::duration_cast<std::chrono::seconds>(now).count();
    connection.Run(
        "UPDATE card SET medium_key = $2, epoch = $3, label = $4, host = $5, place = $6,"
        " seen = $7 WHERE id = $1",
        {card.id, card.mediumKey, card.epoch, card.label, card.host, card.place, card.seen});
}

void EraseCard(Connection& connection, std::int64_t card) {
    std::set<std::int64_t> clips;
    connection.Run("SELECT clip_id FROM holding WHERE card_id = $1", {card},
                   [&](const Row& row) { clips.insert(row.Number(0)); });
    for (const char* const table : kPartTables) {
        connection.Run(DeleteFrom(table), {card});
    }
    connection.Run(DeleteFrom("holding"), {card});
    RemoveLoose(connection, clips);
    connection.Run("DELETE FROM card WHERE id = $1", {card});
}

} // namespace nqp2::catalogue
