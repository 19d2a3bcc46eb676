// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2Clip.h"

namespace nqp2::clips {

/// Removes every memo whose Offset an earlier one has; the order of the others stays.
void RemoveRepeatedMemos(CArray<_tag_P2Memo>& memos);

} // namespace nqp2::clips
