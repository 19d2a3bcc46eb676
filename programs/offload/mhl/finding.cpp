// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/finding.h"

#include <utility>

namespace nqp2::mhl {

std::string Finding::Text() const {
    return file + (line > 0 ? ":" + std::to_string(line) : std::string()) + ": " + sentence;
}

void Findings::Add(Finding finding) {
    ++m_count;
    m_faults += finding.isFault ? 1 : 0;
    if (m_kept.size() < kMostKept) {
        m_kept.push_back(std::move(finding));
    }
}

void Findings::Add(const Findings& others) {
    m_count += others.m_count - others.m_kept.size();
    std::size_t keptFaults = 0;
    for (const Finding& each : others.m_kept) {
        Add(each);
        keptFaults += each.isFault ? 1 : 0;
    }
    m_faults += others.m_faults - keptFaults;
}

} // namespace nqp2::mhl
