// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CStringArray.h"
#include "NQP2ParserU/Export.h"

class CNQP2Parser;

namespace nqp2 {

/// The names of the clips that the parser's last real-time export has made, in their order; while
/// it runs, those that it is making too. Mostly one: a worker chooses the name when the host gives
/// none, and goes on in another clip when a file is full. Empty without an answer of the worker.
NQP2_API CStringArray RecordedClips(const CNQP2Parser& parser) noexcept;

} // namespace nqp2
