// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_import.h"

#include "platform/unicode.h"
#include "worker/card_folder.h"

namespace nqp2::worker {

Outcome ImportClip(const ImportRequest& request, std::size_t blockSize, TransferWatch& watch,
                   TransferSizes& sizes) {
    std::string contents;
    std::string target;
    std::vector<ClipFile> files;
    Outcome outcome = FindContents(request.cardRoot, contents);
    if (outcome) {
        outcome = CollectClip(contents, request.clipName, files);
    }
    if (outcome) {
        outcome = ResolveRoot(request.destination, target);
    }
    if (!outcome) {
        return outcome;
    }
    std::vector<TransferItem> items;
    const std::string name = platform::NameBytesFromText(request.clipName.View());
    for (const ClipFile& file : files) {
        items.push_back(ItemFor(file, name));
    }
    return RunTransfer(target, items, blockSize, watch, sizes);
}

} // namespace nqp2::worker
