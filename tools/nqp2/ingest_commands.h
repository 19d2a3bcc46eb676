// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "ingest/IngestList.h"
#include "tools/nqp2/command.h"

namespace nqp2::tool {

class Card;

/// The commands of `nqp2 ingest`.
void AddIngestListCommand(CLI::App& group, Action& chosen);
void AddIngestAddCommand(CLI::App& group, Action& chosen);
void AddIngestRemoveCommand(CLI::App& group, Action& chosen);

/// The card's ingest list. Throws Failure when there is no such folder or the list cannot be read.
IngestList LoadListOf(const Card& card);

} // namespace nqp2::tool
