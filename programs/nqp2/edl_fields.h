// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/value.h"
#include "NQP2ParserU/P2EDL.h"

namespace nqp2::tool {

class InputValue;

/// Shows every field of an edit list under its own name in declaration order, "Events" a list of
/// records of the same kind, each with its "Clip" when that record was filled. Paths are POSIX
/// paths.
void PutEdl(ValueSink& sink, const tag_P2EDL& edl);

/// An edit list of the same form; what is missing and follows from the rest is filled in, an
/// event's GUID by its identifier, all else keeps the value of a fresh record. Throws Failure for a
/// value of the wrong kind, for one that contradicts others and for a name that no field has.
tag_P2EDL EdlFromInput(const InputValue& input);

} // namespace nqp2::tool
