// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "ingest/IngestList.h"
#include "tools/nqp2/command.h"

namespace nqp2::tool {

/// The commands of `nqp2 ingest`.
void AddIngestListCommand(CLI::App& group, Action& chosen);
void AddIngestAddCommand(CLI::App& group, Action& chosen);
void AddIngestRemoveCommand(CLI::App& group, Action& chosen);

/// Throws the failure to report unless the list was read or changed.
void RequireDone(const IngestResult& result);

} // namespace nqp2::tool
