// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "NQP2ParserU/CardFinder.h"
#include "NQP2ParserU/CArray.h"
#include "NQP2ParserU/P2Clip.h"
#include "NQP2ParserU/P2EDL.h"
#include "NQP2ParserU/ScanReport.h"

#include <string>
#include <vector>

namespace nqp2::offload {

/// A card in the folder that was given, with what its own files tell. Of the edit lists of AVCHD
/// cards, which are playlists, `lists` is empty.
struct CardContents {
    FoundCard card;
    CArray<_tag_P2Clip> clips;
    ScanReport report;
    CArray<tag_P2EDL> lists;
    ScanReport listReport;
};

/// What a folder is: the cards in it, and the card that it is only a part of.
struct GivenFolder {
    std::vector<CardContents> cards;
    CArray<SkippedFile> skipped; ///< folders in which cards were not looked for
    std::string partOf;          ///< path of that card; "" when the folder is part of none
};

/// Looks for cards in a folder and below it, and reads what they tell. `path` is whole.
GivenFolder ReadGivenFolder(const std::string& path);

/// A word for what was found: "P2 card", "3 cards"; "" for nothing.
std::string KindText(const GivenFolder& given);

} // namespace nqp2::offload
