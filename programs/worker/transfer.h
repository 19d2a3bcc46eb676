// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "copy/transaction.h"
#include "NQP2ParserU/CString.h"
#include "worker/source_clip.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// Clips from cards to folders and back: all of what was asked for arrives, or nothing.
namespace nqp2::worker {

struct ImportRequest {
    CString cardRoot;
    CString clipName;
    CString destination;     ///< receives a CONTENTS tree; made when missing
    bool incomplete = false; ///< takes a clip that is not whole
};

struct ExportRequest {
    CString cardRoot;
    CString source; ///< folder that holds a CONTENTS tree
    std::vector<CString> clipNames;
    bool incomplete = false; ///< takes clips that are not whole
};

/// What a transfer has come to, also when it fails.
struct TransferSizes {
    std::uint64_t total = 0;
    std::uint64_t written = 0; ///< without what was there already
    std::array<std::uint64_t, kClipParts> byPart = {};
    std::uint32_t files = 0;
    std::string lacks; ///< what the clips lack that were taken all the same

    void Count(ClipPart part, std::uint64_t size);
};

/// Copies a clip from a card to a folder.
void ImportClip(const ImportRequest& request, std::size_t blockSize, copy::Watch& watch,
                TransferSizes& sizes);

/// Copies clips from a folder onto a card, all or none, under free names where theirs are taken.
void ExportClips(const ExportRequest& request, std::size_t blockSize, copy::Watch& watch,
                 TransferSizes& sizes);

/// Decides under which names clips come onto the card that the transaction has open, reserves these
/// names and lists what is to be copied, the metadata of all clips last.
///
/// A clip that the card holds already, under whatever name, with its identifier and content, or the
/// beginning of one without its metadata, is not copied again. The others keep their names where
/// these are free. Clips of one take refer to each other by name: where one that the card holds
/// would have to refer to another name now, the whole take is copied under new names.
std::vector<copy::Item> PlanExport(copy::Transaction& transaction,
                                   const std::vector<SourceClip>& clips, copy::Copier& copier,
                                   TransferSizes& sizes);

} // namespace nqp2::worker
