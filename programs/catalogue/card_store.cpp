// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_store.h"

#include "catalogue/card_writer.h"
#include "catalogue/medium.h"
#include "catalogue/moved_card.h"
#include "catalogue/words.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace nqp2::catalogue {
namespace {

constexpr int kMostTries = 8;

/// A clip as one card knows it.
using ClipKey = std::pair<std::string, std::string>;
ClipKey KeyOf(const HoldingRecord& holding) {
    return {holding.name, holding.identifier};
}

/// Whether a medium still holds what it held. Formatted and used anew it has other clips.
bool IsSameRecording(const CardContents& contents, const std::vector<HoldingRecord>& known) {
    if (!contents.unchanged.empty() || known.empty() || contents.read.empty()) {
        return true;
    }
    std::set<ClipKey> keys;
    std::transform(known.begin(), known.end(), std::inserter(keys, keys.end()), KeyOf);
    return std::any_of(contents.read.begin(), contents.read.end(),
                       [&](const CardClip& each) { return keys.contains(KeyOf(each.holding)); });
}

void LockMedium(Connection& connection, const std::string& mediumKey) {
    if (const char* const lock = connection.Words().lockText; *lock != '\0') {
        connection.Run(lock, {mediumKey});
    }
}

std::optional<CardRecord> NewestOn(Connection& connection, const std::string& mediumKey) {
    std::vector<CardRecord> cards = CardsOn(connection, mediumKey);
    return cards.empty() ? std::nullopt : std::optional(std::move(cards.front()));
}

/// Whether nobody has changed the card in the catalogue in the meantime.
bool IsAsSeen(const std::optional<CardRecord>& then, const std::optional<CardRecord>& now) {
    return then.has_value() == now.has_value() &&
           (!then || (then->id == now->id && then->state == now->state));
}

class Storing {
public:
    Storing(Connection& connection, const FoundCard& found, const std::string& label)
        : m_connection(connection), m_card(LookAt(found)), m_medium(MediumOf(found)),
          m_label(KeptText(label)) {}

    StoreOutcome Run() {
        const std::optional<CardRecord> before = NewestOn(m_connection, m_medium.key);
        if (before && before->state == m_card.state.digest) {
            return Touch(*before);
        }
        if (!before) {
            if (std::optional<CardRecord> moved = MovedCard(m_connection, m_card.state.digest)) {
                moved->mediumKey = m_medium.key;
                moved->epoch = 1;
                return Touch(std::move(*moved));
            }
        }
        std::vector<HoldingRecord> known;
        if (before) {
            known = HoldingsOf(m_connection, before->id);
        }
        StoreOutcome outcome;
        CardContents contents = ReadCard(m_card, known, outcome.remarks);
        const bool isSame = before && IsSameRecording(contents, known);
        Transaction transaction(m_connection, m_connection.Words().beginWrite);
        LockMedium(m_connection, m_medium.key);
        if (!IsAsSeen(before, NewestOn(m_connection, m_medium.key))) {
            throw DatabaseError(DatabaseFault::Conflict, "another has just stored the card");
        }
        CardRecord& card = contents.card;
        card.id = isSame ? before->id : 0;
        card.epoch = isSame ? before->epoch : before ? before->epoch + 1 : 1;
        card.added = isSame ? before->added : card.added;
        card.label = m_label.empty() && isSame ? before->label : m_label;
        CardWriter writer(m_connection, contents, isSame ? known : std::vector<HoldingRecord>());
        writer.Write();
        transaction.Commit();
        outcome.isNew = !isSame;
        outcome.clipsRead = static_cast<std::int64_t>(contents.read.size());
        outcome.clipsGone = writer.CountOfGone();
        outcome.card = std::move(card);
        return outcome;
    }

private:
    StoreOutcome Touch(CardRecord card) {
        card.label = m_label.empty() ? card.label : m_label;
        TouchCard(m_connection, card, m_card.path);
        StoreOutcome outcome;
        outcome.card = std::move(card);
        outcome.isUnchanged = true;
        return outcome;
    }

    Connection& m_connection;
    SeenCard m_card;
    Medium m_medium;
    std::string m_label;
};

template <class Action>
auto WithRetries(const Action& action) {
    for (int tries = 1;; ++tries) {
        try {
            return action();
        } catch (const DatabaseError& error) {
            if (error.Fault() != DatabaseFault::Conflict || tries == kMostTries) {
                throw;
            }
        }
    }
}

} // namespace

StoreOutcome StoreCard(Connection& connection, const FoundCard& found, const std::string& label) {
    return WithRetries([&] { return Storing(connection, found, label).Run(); });
}

void RemoveCard(Connection& connection, std::int64_t card) {
    WithRetries([&] {
        Transaction transaction(connection, connection.Words().beginWrite);
        EraseCard(connection, card);
        transaction.Commit();
    });
}

bool IsKnown(Connection& connection, const FoundCard& found) {
    return !CardsOn(connection, MediumOf(found).key).empty() ||
           MovedCard(connection, LookAt(found).state.digest);
}

std::vector<CardRecord> CardsOn(Connection& connection, const std::string& mediumKey) {
    static const std::string kSelect = "SELECT id, " + NamesOf(kCardColumns) +
                                       " FROM card WHERE medium_key = $1 ORDER BY epoch DESC";
    std::vector<CardRecord> cards;
    connection.Run(kSelect, {mediumKey}, [&](const Row& row) {
        CardRecord& card = cards.emplace_back();
        card.id = row.Number(0);
        ReadValues(row, 1, kCardColumns, card);
    });
    return cards;
}

std::vector<HoldingRecord> HoldingsOf(Connection& connection, std::int64_t card) {
    static const std::string kSelect =
        "SELECT " + NamesOf(kHoldingColumns) + " FROM holding WHERE card_id = $1";
    std::vector<HoldingRecord> holdings;
    connection.Run(kSelect, {card}, [&](const Row& row) {
        ReadValues(row, 0, kHoldingColumns, holdings.emplace_back());
    });
    return holdings;
}

} // namespace nqp2::catalogue
