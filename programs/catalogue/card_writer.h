// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/connection.h"
#include "catalogue/records.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace nqp2::catalogue {

/// Writes what was read of a card into an open transaction.
class CardWriter {
public:
    /// `known` are the holdings that the card has until now. The card gets its number here.
    CardWriter(Connection& connection, CardContents& contents,
               const std::vector<HoldingRecord>& known);

    void Write();
    /// Clips that the card has no more.
    [[nodiscard]] std::int64_t CountOfGone() const { return m_gone; }

private:
    void WriteCard();
    void WriteClips();
    void WriteHoldings();
    void RemoveGone();
    void RemoveGaps();
    template <class Columns, class Records>
    void WriteParts(const char* table, const Columns& columns, const Records& records);
    template <class Columns, class Records>
    void Replace(const char* table, const Columns& columns, const Records& records);

    Connection& m_connection;
    CardContents& m_contents;
    bool m_isNew;                                 ///< nothing of the card is there until now
    std::map<std::string, HoldingRecord> m_known; ///< by name, what is not written yet
    std::set<std::int64_t> m_loosened;            ///< clips that this card may have held alone
    std::int64_t m_gone = 0;
};

/// Notes when and where a card was seen, what it lies on, and its label.
void TouchCard(Connection& connection, CardRecord& card, const std::string& path);

/// Removes a card with all that belongs to it, in an open transaction.
void EraseCard(Connection& connection, std::int64_t card);

} // namespace nqp2::catalogue
