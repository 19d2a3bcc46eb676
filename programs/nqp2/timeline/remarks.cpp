// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "nqp2/timeline/remarks.h"

#include <fmt/format.h>

namespace nqp2::timeline {
namespace {

constexpr std::size_t kMostRemarks = 100;
constexpr std::size_t kMostEvents = 3;

} // namespace

void Remarks::Add(const std::string& text) {
    Find(text);
}

void Remarks::AddEvent(std::size_t number, const std::string& text) {
    if (Entry* const entry = Find(text)) {
        ++entry->count;
        if (entry->first.size() < kMostEvents) {
            entry->first.push_back(number);
        }
    }
}

void Remarks::Tell(const std::function<void(const std::string& line)>& tell) const {
    for (const Entry& entry : m_entries) {
        if (entry.count == 0) {
            tell(entry.text);
            continue;
        }
        const std::size_t others = entry.count - entry.first.size();
        tell(fmt::format("{} (event{} {}{})", entry.text, entry.count == 1 ? "" : "s",
                         fmt::join(entry.first, ", "),
                         others == 0 ? "" : fmt::format(" and {} more", others)));
    }
    if (m_untold > 0) {
        tell(fmt::format("{} more remarks like these", m_untold));
    }
}

Remarks::Entry* Remarks::Find(const std::string& text) {
    const auto known = m_known.find(text);
    if (known != m_known.end()) {
        return &m_entries[known->second];
    }
    if (m_entries.size() == kMostRemarks) {
        ++m_untold;
        return nullptr;
    }
    m_known.emplace(text, m_entries.size());
    m_entries.push_back({text, {}, 0});
    return &m_entries.back();
}

} // namespace nqp2::timeline
