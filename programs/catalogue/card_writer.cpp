// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_writer.h"

#include "catalogue/medium.h"
#include "catalogue/words.h"
#include "platform/host_name.h"

#include <algorithm>
#include <chrono>
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
    : m_connection(connection), m_contents(contents), m_isFirst(known.empty()) {
    for (const HoldingRecord& each : known) {
        m_known.emplace(each.name, each);
    }
}

void CardWriter::Write() {
    WriteCard();
    WriteClips();
    RemoveGone();
    WriteGaps();
    Replace("list", kListColumns, m_contents.lists);
    Replace("event", kEventColumns, m_contents.events);
    Replace("ingest", kIngestColumns, m_contents.ingests);
    Replace("generation", kGenerationColumns, m_contents.generations);
    RemoveLoose(m_connection, m_loosened);
}

void CardWriter::WriteCard() {
    static const std::string kInsert = InsertInto("card", "", kCardColumns) + " RETURNING id";
    static const std::string kUpdate = UpdateById("card", kCardColumns);
    CardRecord& card = m_contents.card;
    Parameters parameters;
    if (card.id == 0) {
        AddValues(parameters, kCardColumns, card);
        m_connection.Run(kInsert, parameters, [&](const Row& row) { card.id = row.Number(0); });
    } else {
        parameters.emplace_back(card.id);
        AddValues(parameters, kCardColumns, card);
        m_connection.Run(kUpdate, parameters);
    }
}

void CardWriter::WriteClips() {
    static const std::string kInsert =
        InsertInto("clip", "", kClipColumns) + OrUpdate("identity", kClipColumns) + " RETURNING id";
    // In one order for all writers, so that no two wait for each other.
    std::sort(m_contents.read.begin(), m_contents.read.end(),
              [](const auto& a, const auto& b) { return a.clip.identity < b.clip.identity; });
    for (CardClip& each : m_contents.read) {
        each.clip.words = m_connection.Words().keptWords(each.clip.words);
        Parameters parameters;
        AddValues(parameters, kClipColumns, each.clip);
        m_connection.Run(kInsert, parameters,
                         [&](const Row& row) { each.holding.clip = row.Number(0); });
        WriteHolding(each.holding);
    }
    for (const HoldingRecord& each : m_contents.unchanged) {
        const auto known = m_known.find(each.name);
        if (known != m_known.end() && IsSameButFor(known->second, each)) {
            m_known.erase(known);
        } else {
            WriteHolding(each);
        }
    }
}

void CardWriter::WriteHolding(const HoldingRecord& holding) {
    static const std::string kInsert = InsertInto("holding", "card_id", kHoldingColumns) +
                                       OrUpdate("card_id, name", kHoldingColumns);
    Parameters parameters = {m_contents.card.id};
    AddValues(parameters, kHoldingColumns, holding);
    m_connection.Run(kInsert, parameters);
    if (const auto known = m_known.find(holding.name); known != m_known.end()) {
        if (known->second.clip != holding.clip) {
            m_loosened.insert(known->second.clip);
        }
        m_known.erase(known);
    }
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
void CardWriter::WriteGaps() {
    static const std::string kInsert = InsertInto("gap", "card_id", kGapColumns);
    const std::int64_t card = m_contents.card.id;
    m_connection.Run("DELETE FROM gap WHERE card_id = $1 AND kind = 'segment'", {card});
    for (std::size_t i = 0; !m_isFirst && i < m_contents.read.size(); ++i) {
        m_connection.Run("DELETE FROM gap WHERE card_id = $1 AND clip = $2",
                         {card, m_contents.read[i].holding.name});
    }
    for (const GapRecord& gap : m_contents.gaps) {
        Parameters parameters = {card};
        AddValues(parameters, kGapColumns, gap);
        m_connection.Run(kInsert, parameters);
    }
}

template <class Columns, class Records>
void CardWriter::Replace(const char* table, const Columns& columns, const Records& records) {
    const std::string insert = InsertInto(table, "card_id", columns);
    m_connection.Run(DeleteFrom(table), {m_contents.card.id});
    for (const auto& record : records) {
        Parameters parameters = {m_contents.card.id};
        AddValues(parameters, columns, record);
        m_connection.Run(insert, parameters);
    }
}

void TouchCard(Connection& connection, const CardRecord& card, const std::string& path) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    connection.Run("UPDATE card SET label = $2, host = $3, place = $4, seen = $5 WHERE id = $1",
                   {card.id, card.label, KeptText(platform::HostName()), StoredPath(path),
                    std::int64_t{std::chrono::duration_cast<std::chrono::seconds>(now).count()}});
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
