// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "console/value.h"
#include "nqp2/card_scan.h"
#include "nqp2/clip_columns.h"
#include "nqp2/clip_details.h"
#include "nqp2/clip_document.h"
#include "nqp2/clip_fields.h"
#include "nqp2/clip_order.h"
#include "nqp2/clip_table.h"
#include "nqp2/command.h"
#include "nqp2/flat_fields.h"
#include "nqp2/media_describer.h"
#include "nqp2/scan_report_output.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace nqp2::tool {
namespace {

struct ClipsOptions {
    ScanOptions scan;
    std::string sort = "name";
    std::string columns;
    OutputForm form;
    bool lines = false; ///< of JSON
    bool report = false;
    bool files = false;
    bool metadata = false;
    bool strict = false;

    [[nodiscard]] bool AreJson() const { return form.json || lines; }
    /// Whether the files are looked at that belong to clips.
    [[nodiscard]] bool AskForFiles() const { return files || report; }
};

/// What was scanned, and whether as one card or as a list of cards.
struct Scanned {
    const CardScans& scans;
    bool areSeveral;

    [[nodiscard]] const CardScan& Only() const { return scans.cards.front(); }
};

/// Says how much was left out to a user who did not ask for the report.
void WarnOfSkipped(Console& console, const CardScan& scan) {
    const std::int64_t count = CountOfLosses(scan.report.skipped);
    if (count > 0) {
        console.Message(fmt::format("nqp2: {}: {} file{} skipped or incomplete (--report names {})",
                                    scan.card.Folder(), count, count == 1 ? "" : "s",
                                    count == 1 ? "it" : "them"));
    }
}

void WarnOfSkipped(Console& console, const CardScans& scans) {
    for (const SkippedFile& file : scans.skipped) {
        console.Message(
            fmt::format("nqp2: {}: skipped ({})", PositionText(file), ReasonText(file)));
    }
    for (const CardScan& scan : scans.cards) {
        WarnOfSkipped(console, scan);
    }
}

void PrintReport(const Scanned& scanned, const TellLine& tell) {
    if (scanned.areSeveral) {
        ForEachReportLine(scanned.scans, tell);
    } else {
        ForEachReportLine(scanned.Only().report, tell);
    }
}

void PutRow(ValueSink& sink, const Scanned& scanned, const _tag_P2Clip& clip) {
    if (scanned.areSeveral) {
        PutClipOfCard(sink, scanned.scans.CardOf(clip).label, clip);
    } else {
        PutClip(sink, clip);
    }
}

Value FreshRow(bool areSeveral) {
    return Content([areSeveral](ValueSink& sink) {
        if (areSeveral) {
            PutClipOfCard(sink, {}, {});
        } else {
            PutClip(sink, {});
        }
    });
}

constexpr const char* kAllColumns = "all";

/// Every field of the record, written as it comes.
void PrintEveryField(Console& console, const Scanned& scanned, const ClipOrder& clips) {
    const Sequence rows = {clips.size(), [&](ValueSink& sink, std::size_t index) {
                               FetchAhead(clips, index);
                               PutRow(sink, scanned, *clips[index]);
                           }};
    PrintCsv(console, FreshRow(scanned.areSeveral), rows);
}

void PrintTable(Console& console, const Scanned& scanned, const ClipOrder& clips) {
    const CardOfClip card = [&scanned](const _tag_P2Clip& clip) {
        return scanned.scans.CardOf(clip).label;
    };
    PrintClipTable(console, clips, scanned.areSeveral ? card : CardOfClip());
}

/// Refuses options that do not go together.
void RequireOneForm(const ClipsOptions& options) {
    if (options.lines && (options.form.json || options.form.csv)) {
        throw Failure("--jsonl", "is a form of its own", "not with --json and --csv", kUsage);
    }
    if (options.AreJson() && !options.columns.empty()) {
        throw Failure("--columns", "is for tables", "not with --json and --jsonl", kUsage);
    }
    if (options.metadata && !options.AreJson()) {
        throw Failure("--metadata", "is for --json and --jsonl",
                      "columns have names: --columns Name,metadata.place.name", kUsage);
    }
}

/// The columns to print; nothing where a form has its own.
std::optional<ClipColumns> ColumnsOf(const ClipsOptions& options) {
    const bool isEveryField = options.form.csv && options.columns == kAllColumns;
    const bool hasOwn = options.columns.empty() && !options.form.csv;
    if (options.AreJson() || isEveryField || hasOwn) {
        return std::nullopt;
    }
    return ClipColumns(options.columns.empty() ? kDefaultColumns : options.columns);
}

/// Whether what stands beside the list goes to standard output too.
bool IsReportBelow(const ClipsOptions& options) {
    return !options.form.csv && !options.lines;
}

void PrintList(Console& console, const ClipsOptions& options, const Scanned& scanned,
               const ClipListing& listing, const std::optional<ClipColumns>& columns) {
    if (options.form.json) {
        PrintClipsDocument(console, listing);
    } else if (options.lines) {
        PrintClipLines(console, listing);
    } else if (columns && options.form.csv) {
        PrintCsvColumns(console, listing, *columns);
    } else if (columns) {
        PrintTableColumns(console, listing, *columns);
    } else if (options.form.csv) {
        PrintEveryField(console, scanned, listing.clips);
    } else {
        PrintTable(console, scanned, listing.clips);
    }
}

/// What was asked for beside the list, where the list is no document.
void PrintBeside(Console& console, const ClipsOptions& options, const Scanned& scanned,
                 const ClipListing& listing) {
    if (options.form.json) {
        return;
    }
    const TellLine tell = [&](const std::string& line) {
        if (IsReportBelow(options)) {
            console.WriteLine(line);
        } else {
            console.Message(line);
        }
    };
    if (options.report) {
        PrintReport(scanned, tell);
    }
    if (options.AskForFiles()) {
        ForEachFileLine(listing, tell);
    }
    if (options.report) {
        ForEachRemarkLine(listing, tell);
    }
}

/// Says to a user who sees no remarks that there are some on what metadata tell.
void WarnOfRemarks(Console& console, const ClipsOptions& options, const ClipListing& listing,
                   bool areRead) {
    const std::size_t count = areRead && !options.AreJson() && !options.report
                                  ? listing.details.Remarked(listing.clips).size()
                                  : 0;
    if (count > 0) {
        console.Message(fmt::format("nqp2: {} clip{} tell{} what cannot be (--report names it)",
                                    count, count == 1 ? "" : "s", count == 1 ? "s" : ""));
    }
}

bool HasLosses(const CardScans& scans) {
    return CountOfLosses(scans.skipped) > 0 ||
           std::any_of(scans.cards.begin(), scans.cards.end(),
                       [](const CardScan& scan) { return CountOfLosses(scan.report.skipped) > 0; });
}

Status RunClips(Console& console, const ClipsOptions& options) {
    RequireOneForm(options);
    const std::optional<ClipColumns> columns = ColumnsOf(options);
    ClipReading reading = columns ? columns->Reading() : ClipReading();
    reading.metadata = reading.metadata || options.metadata;
    reading.files = reading.files || options.AskForFiles();
    ScanOptions scan = options.scan;
    scan.withFiles = reading.files;
    // The process ends with this command: the system takes all memory back at once, faster than ten
    // thousand records can be taken apart.
    static const CardScans& scans = *new CardScans(ScanCards(console, scan));
    const Scanned scanned = {scans, options.scan.AreSeveral()};
    MediaDescriber describer(console, options.scan.worker);
    ClipDetails details(console, scans, reading, describer);
    const ClipOrder clips = OrderedClips(scans, options.sort);
    const ClipListing listing = {scans,         clips,         details, scanned.areSeveral,
                                 options.files, options.report};
    PrintList(console, options, scanned, listing, columns);
    PrintBeside(console, options, scanned, listing);
    console.Finish();
    if (!options.report) {
        WarnOfSkipped(console, scans);
    }
    WarnOfRemarks(console, options, listing, reading.metadata);
    const bool lacks = HasLosses(scans) || details.CountOfUnread() > 0 ||
                       (options.AskForFiles() && !details.Broken(clips).empty());
    return options.strict && lacks ? kSkipped : kDone;
}

} // namespace

void AddClipsCommand(const Command& program) {
    const Command command =
        program.Add("clips", "List all clips of cards, P2 or AVCHD, or camera folders");
    ClipsOptions& options = command.Runs(RunClips);
    command.CardArguments(options.scan.cards);
    command.Flag("--recursive", options.scan.recursive,
                 "List every card in these folders and below");
    command.JsonAndCsvFlags(options.form, ", a document of all", "; see --columns");
    command.Flag("--jsonl", options.lines, "Print JSON, each clip on a line of its own");
    command
        .ValueOption("--columns", options.columns, "COLUMNS",
                     "Of the table or CSV, names with commas between: Name, Card, Start ...\n"
                     "(default: all such), all (every field), members of JSON")
        .NotEmpty();
    command.Flag("--metadata", options.metadata, "With JSON, tell all that the clips' files tell");
    command.Flag("--files", options.files,
                 "Look at the files: JSON tells those of each clip, a table\nthose that are not "
                 "whole, all name the files of no clip");
    command
        .ValueOption("--sort", options.sort, "ORDER",
                     "By name (the default), by shooting date or not at all")
        .OneOf(ClipOrderNames());
    command.Flag("--report", options.report,
                 "Tell what was skipped and which takes and clips are incomplete");
    command.Flag("--keep-digit", options.scan.keepDigit,
                 "Keep ClipIdDigit as read (else it is -1)");
    command.Flag("--strict", options.strict,
                 "Exit with 4 when a file was skipped or, where files are\n"
                 "asked for, a clip is not whole");
    command.WorkerOption(options.scan.worker);
    command.Example("nqp2 clips /media/card --sort date --report");
}

} // namespace nqp2::tool
