// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace nqp2::mhl {

/// What was found wrong with a history itself. Texts in it may come from strangers.
struct Finding {
    bool isFault = true;  ///< else it is worth a remark and bars nothing
    std::string file;     ///< of the history, as a path below the outermost scope
    int line = 0;         ///< from 1; 0 when there is none
    std::string sentence; ///< without a full stop

    /// "ascmhl/0001_A.mhl:12: SENTENCE"
    [[nodiscard]] std::string Text() const;
};

/// Keeps the first findings and counts all.
class Findings {
public:
    static constexpr std::size_t kMostKept = 1000;

    void Add(Finding finding);
    void Add(const Findings& others);
    [[nodiscard]] const std::vector<Finding>& Kept() const { return m_kept; }
    [[nodiscard]] std::size_t Count() const { return m_count; }
    [[nodiscard]] std::size_t Faults() const { return m_faults; }

private:
    std::vector<Finding> m_kept;
    std::size_t m_count = 0;
    std::size_t m_faults = 0;
};

} // namespace nqp2::mhl
