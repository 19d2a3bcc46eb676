// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/transaction.h"
#include "worker/source_clip.h"
#include "worker/transfer_watch.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace nqp2::worker {

struct TransferSizes {
    std::uint64_t total = 0;
    std::uint64_t written = 0; ///< without what was there already
    std::array<std::uint64_t, kClipParts> byPart = {};
    std::uint32_t files = 0;
    std::string lacks; ///< what the clips lack that were taken all the same

    void Count(ClipPart part, std::uint64_t size);
};

/// Bytes of all files of the clips.
std::uint64_t BytesOf(const std::vector<SourceClip>& clips);

/// Brings the items to their places below the open root, in their order: metadata last. Files of
/// killed transfers there are removed first.
Outcome RunTransfer(copy::Transaction& transaction, const std::vector<copy::Item>& items,
                    copy::Copier& copier, TransferSizes& sizes);

} // namespace nqp2::worker
