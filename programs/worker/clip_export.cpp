// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/clip_export.h"

#include "worker/card_folder.h"
#include "worker/export_plan.h"

#include "platform/case_fold.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

Outcome CheckNames(const std::vector<CString>& names) {
    std::vector<std::wstring> folded;
    for (const CString& name : names) {
        folded.push_back(platform::FoldCase(name.View()));
    }
    std::sort(folded.begin(), folded.end());
    if (names.empty()) {
        return Failure("No clip was named for the export.");
    }
    return std::adjacent_find(folded.begin(), folded.end()) == folded.end()
               ? Outcome()
               : Failure("A clip was named twice for the export.");
}

Outcome OpenTarget(const CString& cardRoot, copy::Transaction& transaction) {
    std::string folder;
    Outcome outcome = ResolveRoot(cardRoot, folder);
    return outcome ? transaction.Open(folder, false) : outcome;
}

} // namespace

Outcome ExportClips(const ExportRequest& request, std::size_t blockSize, TransferWatch& watch,
                    TransferSizes& sizes) {
    std::string source;
    std::vector<SourceClip> clips;
    copy::Transaction transaction;
    Outcome outcome = CheckNames(request.clipNames);
    if (outcome) {
        outcome = OpenTarget(request.cardRoot, transaction);
    }
    if (outcome) {
        outcome = FindContents(request.source, source);
    }
    if (outcome) {
        outcome = ReadSourceClips(source, request.clipNames, request.incomplete, clips);
    }
    copy::Copier copier(blockSize, BytesOf(clips), watch);
    if (outcome) {
        outcome = copier.Begin();
    }
    std::vector<copy::Item> items;
    if (outcome) {
        outcome = PlanExport(transaction, clips, copier, items, sizes);
    }
    sizes.lacks = Lacks(clips);
    return outcome ? RunTransfer(transaction, items, copier, sizes) : outcome;
}

} // namespace nqp2::worker
