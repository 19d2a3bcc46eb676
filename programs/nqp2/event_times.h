// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/P2EDL.h"

namespace nqp2::tool {

class InputValue;

/// Fills in what an event that was read from `input` does not tell of first frame, last frame and
/// length and the others tell. Throws Failure where they contradict each other.
void CompleteTimes(const InputValue& input, tag_P2EDLClipTrackEvent& event);

/// Puts an event without an Offset behind the one before it, if there is one.
void PlaceBehind(const tag_P2EDL& edl, const InputValue& input, tag_P2EDLClipTrackEvent& event);

/// Fills in the length of a list that does not tell it: the end of the event that ends last.
void CompleteLength(const InputValue& input, tag_P2EDL& edl);

} // namespace nqp2::tool
