// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "worker/transfer.h"

#include "platform/case_fold.h"
#include "worker/base/card_folder.h"

#include <algorithm>

namespace nqp2::worker {
namespace {

/// Bytes of all files of the clips.
std::uint64_t BytesOf(const std::vector<SourceClip>& clips) {
    std::uint64_t bytes = 0;
    for (const SourceClip& clip : clips) {
        for (const SourceFile& file : clip.files) {
            bytes += file.info.size;
        }
    }
    return bytes;
}

/// Brings the items to their places below the open root, in their order: metadata last. Files of
/// killed transfers there are removed first.
void Run(copy::Transaction& transaction, const std::vector<copy::Item>& items, copy::Copier& copier,
         TransferSizes& sizes) {
    transaction.Sweep("");
    for (const media::ClipFileKind& kind : media::kClipFileKinds) {
        transaction.Sweep(platform::PathIn(media::kContents.Bytes(), kind.folder.Bytes()));
    }
    transaction.Look(items, copier);
    transaction.CheckSpace();
    transaction.Write(copier, sizes.written);
    copier.Finish();
    transaction.Commit();
}

void CheckNames(const std::vector<CString>& names) {
    std::vector<std::wstring> folded;
    for (const CString& name : names) {
        folded.push_back(platform::FoldCase(name.View()));
    }
    std::sort(folded.begin(), folded.end());
    if (names.empty()) {
        throw copy::Failure("No clip was named for the export.");
    }
    if (std::adjacent_find(folded.begin(), folded.end()) != folded.end()) {
        throw copy::Failure("A clip was named twice for the export.");
    }
}

} // namespace

void TransferSizes::Count(ClipPart part, std::uint64_t size) {
    total += size;
    byPart[static_cast<std::size_t>(part)] += size;
    ++files;
}

void ImportClip(const ImportRequest& request, std::size_t blockSize, copy::Watch& watch,
                TransferSizes& sizes) {
    const std::vector<SourceClip> clips =
        ReadSourceClips(FindContents(request.cardRoot), {&request.clipName, 1}, request.incomplete);
    const std::string target = RootOf(request.destination).OnDisk();
    std::vector<copy::Item> items;
    for (const SourceFile& file : clips.front().files) {
        sizes.Count(file.part, file.info.size);
        items.push_back(ItemFor(file));
    }
    sizes.lacks = Lacks(clips);
    copy::Copier copier(blockSize, BytesOf(clips), watch);
    copier.Begin();
    copy::Transaction transaction;
    transaction.Open(target, true);
    transaction.Reserve(Shown(request.clipName));
    Run(transaction, items, copier, sizes);
}

void ExportClips(const ExportRequest& request, std::size_t blockSize, copy::Watch& watch,
                 TransferSizes& sizes) {
    CheckNames(request.clipNames);
    std::vector<copy::Item> items; // which outlive the transaction
    copy::Transaction transaction;
    transaction.Open(RootOf(request.cardRoot).OnDisk(), false);
    const std::vector<SourceClip> clips =
        ReadSourceClips(FindContents(request.source), request.clipNames, request.incomplete);
    copy::Copier copier(blockSize, BytesOf(clips), watch);
    copier.Begin();
    items = PlanExport(transaction, clips, copier, sizes);
    sizes.lacks = Lacks(clips);
    Run(transaction, items, copier, sizes);
}

} // namespace nqp2::worker
