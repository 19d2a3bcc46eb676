// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "clips/memos.h"

#include <cstdint>
#include <unordered_set>

namespace nqp2::clips {

void RemoveRepeatedMemos(CArray<_tag_P2Memo>& memos) {
    std::unordered_set<std::int32_t> seen;
    std::int64_t kept = 0;
    for (std::int64_t i = 0; i < memos.GetSize(); ++i) {
        if (!seen.insert(memos[i].Offset).second) {
            continue;
        }
        if (kept != i) {
            memos[kept] = memos[i];
        }
        ++kept;
    }
    memos.RemoveAt(kept, memos.GetSize() - kept);
}

} // namespace nqp2::clips
