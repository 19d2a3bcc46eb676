// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "copy/fan_news.h"

#include <iterator>
#include <utility>

namespace nqp2::copy {

void FanNews::AddAfter(ReadingPtr reading, Telling telling) {
    const std::lock_guard guard(m_lock);
    m_pieces.push_back({std::move(reading), std::move(telling)});
}

bool FanNews::Tell(FanReport& report) {
    std::vector<Piece> pieces = std::move(m_held);
    m_held.clear();
    {
        const std::lock_guard guard(m_lock);
        pieces.insert(pieces.end(), std::make_move_iterator(m_pieces.begin()),
                      std::make_move_iterator(m_pieces.end()));
        m_pieces.clear();
    }
    bool hasTold = false;
    for (Piece& piece : pieces) {
        if (piece.after != nullptr && !piece.after->isTold) {
            m_held.push_back(std::move(piece));
        } else {
            piece.telling(report);
            hasTold = true;
        }
    }
    return hasTold;
}

} // namespace nqp2::copy
