// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "catalogue/card_choice.h"
#include "catalogue/card_store.h"
#include "catalogue/catalogue_json.h"
#include "catalogue/catalogue_output.h"
#include "catalogue/commands.h"
#include "catalogue/medium.h"
#include "console/json_output.h"
#include "NQP2ParserU/Interrupt.h"

#include <fmt/core.h>

#include <optional>
#include <utility>

namespace nqp2::catalogue {
namespace {

/// Cards stored one by one; what goes wrong with one does not keep the others.
class StoreRun {
public:
    StoreRun(tool::Console& console, Connection& connection, const Arguments& arguments)
        : m_console(console), m_connection(connection), m_arguments(arguments) {
        CatchInterrupt();
    }

    void Store(const FoundCard& card) {
        if (WasInterrupted()) {
            throw tool::Failure("Cancelled.", "", "");
        }
        const StoreOutcome outcome = StoreCard(m_connection, card, m_arguments.label);
        if (!m_arguments.json) {
            PrintOutcome(outcome);
            m_console.Finish();
        }
        m_outcomes.push_back(outcome);
    }

    template <class Action>
    void Try(const Action& action) {
        try {
            action();
        } catch (const tool::Failure& failure) {
            if (WasInterrupted()) {
                throw;
            }
            Tell(failure.what());
        }
    }

    void Tell(const std::string& problem) {
        m_console.Message(fmt::format("nqp2: {}", problem));
        m_problems.push_back(problem);
    }
    void TellUnreached(const CardRecord& card) { m_unreached.push_back(card); }

    tool::Status Finish(const std::string& format) {
        if (m_arguments.json) {
            tool::Record members = {{"cards", ListOfEach(m_outcomes, OutcomeValue)},
                                    {"problems", TextList(m_problems)}};
            if (m_arguments.operation == "update") {
                members.push_back({"notReached", ListOfEach(m_unreached, CardValue)});
            }
            tool::PrintJson(m_console, Document(format, std::move(members)));
        } else if (!m_unreached.empty()) {
            m_console.WriteLine(fmt::format("{} card{} not reached: kept as {}", m_unreached.size(),
                                            m_unreached.size() == 1 ? "" : "s",
                                            m_unreached.size() == 1 ? "it was" : "they were"));
        }
        return m_problems.empty() ? tool::kDone : tool::kFailed;
    }

private:
    void PrintOutcome(const StoreOutcome& outcome) {
        const std::string path = PathOfStored(outcome.card.place);
        std::string line = fmt::format("{}: {}: ", NameOf(outcome.card), path);
        if (outcome.isUnchanged) {
            m_console.WriteLine(line + "unchanged");
            return;
        }
        line += fmt::format("{}, {} clips, {} read", outcome.isNew ? "added" : "updated",
                            outcome.card.clips, outcome.clipsRead);
        line += outcome.clipsGone == 0 ? "" : fmt::format(", {} gone", outcome.clipsGone);
        m_console.WriteLine(line);
        const std::int64_t lost = outcome.remarks.skippedFiles + outcome.remarks.unreadClips;
        if (lost > 0) {
            m_console.Message(fmt::format("nqp2: {}: {} file{} skipped or not read", path, lost,
                                          lost == 1 ? "" : "s"));
        }
    }

    tool::Console& m_console;
    Connection& m_connection;
    const Arguments& m_arguments;
    std::vector<StoreOutcome> m_outcomes;
    std::vector<std::string> m_problems;
    std::vector<CardRecord> m_unreached;
};

void AddBelow(StoreRun& run, const std::string& path) {
    std::vector<std::string> problems;
    const std::vector<FoundCard> cards = CardsBelow(path, problems);
    for (const std::string& problem : problems) {
        run.Tell(problem);
    }
    for (const FoundCard& card : cards) {
        run.Try([&] { run.Store(card); });
    }
}

void UpdateWhereSeen(StoreRun& run, const CardRecord& card) {
    if (const std::optional<FoundCard> found = ReachedAgain(card)) {
        run.Store(*found);
    } else {
        run.TellUnreached(card);
    }
}

/// The cards that a name or path of the user's stands for, of those that are known.
void UpdateNamed(StoreRun& run, tool::Console& console, Connection& connection,
                 const std::string& name) {
    const std::vector<CardRecord> cards = CardsNamed(connection, name);
    for (const CardRecord& card : cards) {
        UpdateWhereSeen(run, card);
    }
    if (cards.empty()) {
        const FoundCard found = CardAt(console, name);
        if (!IsKnown(connection, found)) {
            throw tool::Failure(name, "is not in the catalogue", "nqp2 catalog add adds it");
        }
        run.Store(found);
    }
}

} // namespace

tool::Status RunAdd(tool::Console& console, Connection& connection, const Arguments& arguments) {
    StoreRun run(console, connection, arguments);
    for (const std::string& path : arguments.cards) {
        if (arguments.isRecursive) {
            run.Try([&] { AddBelow(run, path); });
        } else {
            run.Try([&] { run.Store(CardAt(console, path)); });
        }
    }
    return run.Finish("nqp2-catalog-add");
}

tool::Status RunUpdate(tool::Console& console, Connection& connection, const Arguments& arguments) {
    StoreRun run(console, connection, arguments);
    for (const std::string& name : arguments.cards) {
        run.Try([&] { UpdateNamed(run, console, connection, name); });
    }
    if (arguments.cards.empty()) {
        for (const CardRecord& card : AllCards(connection)) {
            run.Try([&] { UpdateWhereSeen(run, card); });
        }
    }
    return run.Finish("nqp2-catalog-update");
}

} // namespace nqp2::catalogue
