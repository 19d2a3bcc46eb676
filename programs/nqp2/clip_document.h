// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "nqp2/clip_details.h"

#include <functional>
#include <string>

namespace nqp2::tool {

class ClipColumns;
class Console;

/// What is listed of cards.
struct ClipListing {
    const CardScans& cards;
    const ClipOrder& clips;
    ClipDetails& details;
    bool areSeveral = false; ///< a list of cards, not one
    bool showsFiles = false;
    bool showsReport = false;
};

/// Prints the listing as a document in JSON.
void PrintClipsDocument(Console& console, const ClipListing& listing);

/// Prints a line of JSON for each clip.
void PrintClipLines(Console& console, const ClipListing& listing);

/// Prints the columns as comma-separated values or as a table.
void PrintCsvColumns(Console& console, const ClipListing& listing, const ClipColumns& columns);
void PrintTableColumns(Console& console, const ClipListing& listing, const ClipColumns& columns);

/// A line for each clip that is not whole, and with the files for each file that is no clip's.
void ForEachFileLine(const ClipListing& listing,
                     const std::function<void(const std::string& line)>& tell);

/// A line for each value of a clip's that cannot be.
void ForEachRemarkLine(const ClipListing& listing,
                       const std::function<void(const std::string& line)>& tell);

} // namespace nqp2::tool
