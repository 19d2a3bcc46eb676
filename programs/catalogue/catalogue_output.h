// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/records.h"
#include "catalogue/search.h"
#include "console/console.h"

#include <cstdint>
#include <string>
#include <vector>

/// What the commands tell a person.
namespace nqp2::catalogue {

/// "card 3 (A012)": what a card is called where it is told of.
std::string NameOf(std::int64_t card, const std::string& label);
std::string NameOf(const CardRecord& card);

void PrintCards(tool::Console& console, const std::vector<CardRecord>& cards);
/// What a card lacks, and where it is: "segment 0001TC is missing: it is on card 3".
std::string GapText(const KnownGap& known);
/// A row for each clip, and what is missing behind them.
void PrintClips(tool::Console& console, const std::vector<FoundClip>& clips);

} // namespace nqp2::catalogue
