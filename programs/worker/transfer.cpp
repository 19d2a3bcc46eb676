// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/transfer.h"

namespace nqp2::worker {

void TransferSizes::Count(ClipPart part, std::uint64_t size) {
    total += size;
    byPart[static_cast<std::size_t>(part)] += size;
    ++files;
}

std::uint64_t BytesOf(const std::vector<SourceClip>& clips) {
    std::uint64_t bytes = 0;
    for (const SourceClip& clip : clips) {
        for (const SourceFile& file : clip.files) {
            bytes += file.info.size;
        }
    }
    return bytes;
}

Outcome RunTransfer(copy::Transaction& transaction, const std::vector<copy::Item>& items,
                    copy::Copier& copier, TransferSizes& sizes) {
    transaction.Sweep("");
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        transaction.Sweep(std::string(media::kContents.Bytes()) + "/" + kind.folder.Bytes());
    }
    Outcome outcome = transaction.Look(items, copier);
    if (outcome) {
        outcome = transaction.CheckSpace();
    }
    if (outcome) {
        outcome = transaction.Write(copier, sizes.written);
    }
    if (outcome) {
        outcome = copier.Finish();
    }
    return outcome ? transaction.Commit() : outcome;
}

} // namespace nqp2::worker
