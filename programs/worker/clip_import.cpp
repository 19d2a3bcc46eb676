// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_import.h"

#include "worker/card_folder.h"

namespace nqp2::worker {

Outcome ImportClip(const ImportRequest& request, std::size_t blockSize, TransferWatch& watch,
                   TransferSizes& sizes) {
    std::string contents;
    std::string target;
    std::vector<SourceClip> clips;
    Outcome outcome = FindContents(request.cardRoot, contents);
    if (outcome) {
        outcome = ReadSourceClips(contents, {&request.clipName, 1}, request.incomplete, clips);
    }
    if (outcome) {
        outcome = ResolveRoot(request.destination, target);
    }
    if (!outcome) {
        return outcome;
    }
    std::vector<copy::Item> items;
    for (const SourceFile& file : clips.front().files) {
        sizes.Count(file.part, file.info.size);
        items.push_back(ItemFor(file));
    }
    sizes.lacks = Lacks(clips);
    copy::Copier copier(blockSize, BytesOf(clips), watch);
    copy::Transaction transaction;
    if (outcome = copier.Begin(); outcome) {
        outcome = transaction.Open(target, true);
    }
    if (outcome) {
        outcome = transaction.Reserve(Shown(request.clipName));
    }
    return outcome ? RunTransfer(transaction, items, copier, sizes) : outcome;
}

} // namespace nqp2::worker
