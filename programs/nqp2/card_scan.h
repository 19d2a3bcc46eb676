// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"
#include "nqp2/card.h"
#include "nqp2/card_entry.h"
#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/ClipFiles.h"
#include "NQP2ParserU/JoinedTakes.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/ScanReport.h"

#include <memory>
#include <string>
#include <vector>

namespace nqp2::tool {

/// The cards to scan, as the user names them, and how.
struct ScanOptions {
    std::vector<std::string> cards;
    bool recursive = false; ///< every card in and below these folders
    bool keepDigit = false;
    bool withFiles = false; ///< the clips' files will be asked for
    std::string worker;
    /// What counts as a card where it is not searched for.
    CardEntry entry = {kEveryCard, nullptr, false, "give one of them, or all with --recursive"};

    /// Whether what comes out is a list of cards, whatever their number.
    [[nodiscard]] bool AreSeveral() const { return recursive || cards.size() > 1; }
};

/// A card as it was scanned.
struct CardScan {
    Card card;
    CardKind kind = CardKind::P2;
    CArray<_tag_P2Clip> clips = {};
    ScanReport report = {};
    CString serialNo = {}; ///< "" where neither volume nor metadata tell it
    /// What tells it from the other cards: its serial number where it alone has that, else its
    /// folder.
    std::string label = {};
    /// Knows what the scan has learnt of the files. Null when nobody asks for them.
    std::unique_ptr<ClipFileReader> files = nullptr;

    /// Of a record of `clips`; of any other, as if all were told.
    [[nodiscard]] ClipTold ToldOf(const _tag_P2Clip& clip) const;
};

/// All cards that were asked for, each once.
struct CardScans {
    std::vector<CardScan> cards;
    CArray<SkippedFile> skipped; ///< folders that were not searched, cards that do not open

    /// The card of a clip of theirs.
    [[nodiscard]] const CardScan& CardOf(const _tag_P2Clip& clip) const;
    /// The takes of all cards; a segment's card counts as in `cards`.
    [[nodiscard]] CArray<JoinedTake> Takes() const;
};

/// Scans cards. Throws the failure to report for one that cannot be read; a search goes on.
CardScans ScanCards(Console& console, const ScanOptions& options);

/// Whether a card that was found is of another kind than P2.
bool IsMediaCard(const Card& card);
/// Its clips, read as a scan reads them: an AVCHD card and a camera folder tell none alone.
CardScan ScanMediaCard(Console& console, const Card& card);

} // namespace nqp2::tool
