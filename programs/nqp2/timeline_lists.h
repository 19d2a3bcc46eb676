// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <string>
#include <vector>

namespace nqp2::tool {

/// The names of lists with commas between them, of many the first.
std::string ListNames(const CArray<tag_P2EDL>& lists);

/// The edit lists or playlists of a card.
class TimelineLists {
public:
    /// Reads all and chooses none.
    explicit TimelineLists(const CardScan& scan);

    /// `names`, in any letter case, choose, all when there are none. Throws the failure to report
    /// for a name that none has, and when there are no lists.
    void Choose(const std::vector<std::string>& names);

    /// The one of that name, in any letter case; null when there is none.
    [[nodiscard]] const tag_P2EDL* Find(const std::string& name) const;
    /// By their names, or in the order in which they were asked for.
    [[nodiscard]] const std::vector<const tag_P2EDL*>& Chosen() const { return m_chosen; }
    /// What could not be read.
    [[nodiscard]] const ScanReport& Report() const { return m_report; }

private:
    std::string m_folder; ///< of the card
    CArray<tag_P2EDL> m_lists;
    ScanReport m_report;
    std::vector<const tag_P2EDL*> m_chosen;
};

} // namespace nqp2::tool
