// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace nqp2::timeline {

/// Collects what of a timeline cannot be told as it is, so that each thing is said once, however
/// many events it concerns.
class Remarks {
public:
    /// About the timeline.
    void Add(const std::string& text);
    /// About one of its events, by its number from 1.
    void AddEvent(std::size_t number, const std::string& text);
    /// One line for each, in the order in which they came, of very many the first.
    void Tell(const std::function<void(const std::string& line)>& tell) const;
    [[nodiscard]] bool AreNone() const { return m_entries.empty(); }

private:
    struct Entry {
        std::string text;
        std::vector<std::size_t> first; ///< events
        std::size_t count = 0;          ///< of them all
    };
    Entry* Find(const std::string& text);

    std::vector<Entry> m_entries;
    std::map<std::string, std::size_t> m_known; ///< indices by texts
    std::size_t m_untold = 0;
};

} // namespace nqp2::timeline
