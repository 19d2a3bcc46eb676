// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "worker/clip_files.h"
#include "worker/outcome.h"
#include "worker/transfer_watch.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nqp2::worker {

/// One file that a transfer brings to its place.
struct TransferItem {
    ClipPart part = ClipPart::Other;
    std::string source;                 ///< path; stands for the content in messages
    std::optional<std::string> content; ///< written in place of the source's bytes
    std::uint64_t size = 0;
    std::string folder; ///< below CONTENTS
    std::string name;
};

struct TransferSizes {
    std::uint64_t total = 0;
    std::uint64_t written = 0; ///< without what was there already
    std::array<std::uint64_t, kClipParts> byPart = {};
    std::uint32_t files = 0;
};

/// Brings files below root/CONTENTS, as docs/worker.md promises: nothing is overwritten, nothing
/// gets its name before everything is verified, names are given in the items' order. On failure
/// what this call has written is gone again. Folders that are missing are made and stay.
Outcome RunTransfer(const std::string& root, const std::vector<TransferItem>& items,
                    std::size_t blockSize, TransferWatch& watch, TransferSizes& sizes);

/// The item for a clip's file under a new clip name (bytes as on disk).
TransferItem ItemFor(const ClipFile& file, const std::string& clipName);

} // namespace nqp2::worker
