// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "offload/folder_index.h"
#include "offload/mhl/history.h"
#include "offload/verdict.h"

#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::offload {

/// What became of a copy.
struct CopyOutcome {
    std::uint64_t files = 0; ///< that are there and proven
    std::uint64_t bytes = 0; ///< of them
    std::uint64_t copied = 0;
    std::uint64_t wereThere = 0;
    std::uint64_t copiedAnew = 0;
    OddEntries setAside; ///< under which names what was there with other bytes is now
    OddEntries failures; ///< files and folders that are not there as they should be
    OddEntries strange;  ///< what the copy holds and the card does not; it was left alone
    std::string ended;   ///< why it took no more; "" for one that went on to the end
    std::vector<mhl::AddedGeneration> lists; ///< the copy's own is the last one
    std::string notSealed;                   ///< why there is no list; "" when there is one
    std::string sums;                        ///< the file of checksums; "" when there is none
    double seconds = 0;                      ///< until it was proven
    std::vector<platform::FileInfo> seen;    ///< each file as it arrived, by its number
    TargetProof proof;
};

/// What became of a run.
struct Outcome {
    std::vector<CopyOutcome> copies;         ///< in the order of the targets
    OddEntries cannotRead;                   ///< files of the card; also those that changed
    OddEntries readOtherwise;                ///< files that the second reading gave other bytes of
    OddEntries changes;                      ///< of the card since it was first looked at
    std::vector<std::string> againstHistory; ///< what is wrong with the card by its own lists
    std::uint64_t filesRead = 0;
    std::uint64_t bytesRead = 0; ///< at the first reading
    double seconds = 0;
    bool wasCancelled = false;
    CardProof card;
    Verdict verdict;
};

} // namespace nqp2::offload
