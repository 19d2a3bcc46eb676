// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/Rewrap.h"
#include "worker/rewrap/file_plan.h"
#include "worker/rewrap/output_file.h"
#include "worker/rewrap/tally.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace nqp2::worker::rewrap {

/// Reads the written file and fails unless its tracks are what went into them, at the same times,
/// with the timecode and the marks that were planned. Fills all but the remarks; `step` is told the
/// bytes of each unit.
void ProveWritten(const PlannedFile& plan, const std::vector<MediaStream>& tracks,
                  const std::vector<std::unique_ptr<Tally>>& wanted, OutputFile& output,
                  RewrapResult& result, const std::function<void(std::size_t)>& step);

} // namespace nqp2::worker::rewrap
