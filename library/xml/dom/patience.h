// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>

namespace nqp2::dom {

/// Of a row of documents for which a way to read brings nothing it is tried for some, then now and
/// again.
class Patience {
public:
    [[nodiscard]] bool IsTried() const { return m_inRow < kTries || m_inRow % kPause == 0; }
    void Note(bool isUseful) { m_inRow = isUseful ? 0 : m_inRow + 1; }

private:
    static constexpr std::size_t kTries = 8;
    static constexpr std::size_t kPause = 32;
    std::size_t m_inRow = 0;
};

} // namespace nqp2::dom
