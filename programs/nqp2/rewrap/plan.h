// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/card_scan.h"
#include "nqp2/rewrap/essence.h"
#include "nqp2/rewrap/recordings.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/Rewrap.h"
#include "NQP2ParserU/RewrapEssence.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::rewrap {

/// One file that is to be made.
struct Plan {
    std::string name;                    ///< of its first clip, or of the list
    std::string title;                   ///< as the cards tell it
    std::string reel;                    ///< the same
    RewrapRequest request;               ///< without target and container until these are set
    std::uint64_t bytes = 0;             ///< of the files that it is made of
    std::vector<std::string> soundTexts; ///< for people: what each track of sound is
    CArray<RewrapEssence> tracks;        ///< what is known of them: less than there are, perhaps
    std::vector<std::string> remarks;    ///< what a person has to know, one sentence each
    std::string failure;                 ///< why it cannot be made; "" when it can

    [[nodiscard]] bool IsPossible() const { return failure.empty(); }
};

/// What the user sets in the place of what the cards tell; "" for what they tell.
struct PlanOptions {
    std::string title;
    std::string reel;
    std::string timecode;
    bool oneTrack = false;
    bool closeGaps = false;
};

/// A file of a recording. Throws the failure to report for one that is not whole.
Plan PlanRecording(EssenceReader& reader, const Recording& recording, const PlanOptions& options);

/// A file of each; what stands in the way of one is its failure.
std::vector<Plan> PlanRecordings(EssenceReader& reader, const std::vector<Recording>& recordings,
                                 const PlanOptions& options);

/// A file of an edit list, whose clips may be on all cards; the report is that of the lists. Throws
/// the failure to report, with the event, for what no file can hold that is not encoded anew.
Plan PlanEditList(EssenceReader& reader, const tool::CardScans& scans, const tag_P2EDL& list,
                  const ScanReport& report, const PlanOptions& options);

} // namespace nqp2::rewrap
