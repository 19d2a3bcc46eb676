// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#pragma once

#include "console/console.h"
#include "console/value.h"
#include "nqp2/card_scan.h"
#include "NQP2ParserU/ScanReport.h"

#include <cstdint>
#include <functional>
#include <string>

namespace nqp2::tool {

/// The report's parts as lists of records.
Value SkippedValue(const CardScans& scans);
Value TakesValue(const CArray<JoinedTake>& takes);

/// Takes a line of a report.
using TellLine = std::function<void(const std::string& line)>;

/// Tells the report in sentences, one line for each skipped file and each take; no lines when there
/// is nothing to tell.
void ForEachReportLine(const ScanReport& report, const TellLine& tell);
/// The same of several cards, with their takes joined; the segments of a take with their cards.
void ForEachReportLine(const CardScans& scans, const TellLine& tell);

/// How many files were skipped or are incomplete; companion files are no loss.
std::int64_t CountOfLosses(const CArray<SkippedFile>& skipped);

/// Missing segments as records.
List MissingRecords(const CArray<MissingSegment>& segments);

/// The name of a missing segment, and its card where that is known.
std::string MissingText(const MissingSegment& segment);

/// "PATH:LINE:COLUMN", the position only where there is one.
std::string PositionText(const SkippedFile& file);

/// Why a file was left out, in words.
std::string ReasonText(const SkippedFile& file);

/// A line on standard error for each loss; the status that they amount to.
Status TellLosses(Console& console, const ScanReport& report, bool strict);

} // namespace nqp2::tool
