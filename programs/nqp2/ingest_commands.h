// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/command.h"
#include "NQP2ParserU/IngestList.h"

namespace nqp2::tool {

/// The commands of `nqp2 ingest`.
void AddIngestListCommand(CLI::App& group, Action& chosen);
void AddIngestAddCommand(CLI::App& group, Action& chosen);
void AddIngestRemoveCommand(CLI::App& group, Action& chosen);

/// Throws the failure to report unless the list was read or changed.
void RequireDone(const IngestResult& result);

} // namespace nqp2::tool
